/// \file
/// The Common Security Services Manager: everything.
#pragma once

#include <Security/cssmapi.h>
#include <Security/cssmapple.h>
#include <Security/cssmconfig.h>
#include <Security/cssmerr.h>
#include <Security/cssmtype.h>
