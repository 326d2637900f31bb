/// CFLocaleEnvironment.h: the locale that the environment names, for hosts whose user defaults name none.
///
///     LANG=de_AT.UTF-8@euro     CFLocaleCopyEnvironmentIdentifier   "de_AT"
///                               CFLocaleCopyEnvironmentLanguages    ("de-AT")
///     LANGUAGE=nl:en_GB         CFLocaleCopyEnvironmentLanguages    ("nl", "en-GB")
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// Language and territory from LC_ALL, else LANG, without codeset and modifier; owned. Null when unset, "C" or "POSIX".
CF_EXPORT CFStringRef CFLocaleCopyEnvironmentIdentifier(void);

/// The languages in order of preference: LANGUAGE (a list by colons), else LC_ALL, else LC_MESSAGES, else LANG; owned. Null when
/// there is none; LANGUAGE does not count in the "C" locale, as in gettext.
CF_EXPORT CFArrayRef CFLocaleCopyEnvironmentLanguages(void);

CF_EXTERN_C_END
