#pragma once
#ifdef __cplusplus

#include <string>
#include <vector>

/// Pulls values out of small XML documents by string search, and escapes text for XML and back.
///
/// The documents that a toolkit exchanges are small, machine-made and flat. So nothing is parsed: every
/// extraction looks for literal markers (a start key and an end key) in the bytes of the text, and the
/// markers of tags and attributes are made by gluing a name into a fixed pattern. Nesting is not tracked;
/// comments, namespaces and processing instructions are not recognised; well-formedness is never checked.
/// What stands around a value cannot be in its way.
///
/// Text:      UTF-8 in narrow strings, of any bytes, zeros included; positions are bytes. An empty text
///            yields nothing.
/// Results:   the flag says whether there is a result; `value`/`out` is assigned, `list` holds values in
///            document order. Where nothing is found, `value` is empty (exceptions are named at the
///            function); lists say nothing more.
/// Aliasing:  `value`/`out` may be the same object as any other argument, which is then read before it is
///            written. `text` and the keys must not be elements of `list`.
/// Cost:      linear in the text, whatever the text and the markers hold; one pass.
/// Failure:   nothing is logged or thrown, std::bad_alloc apart.
/// Threads:   no state; any thread.
///
///     XMLUtility xml;
///     std::vector<std::string> names;
///     xml.GetValuesForTag("<n>Ann</n><n>Bob</n>", "n", names);    // names: Ann, Bob
class XMLUtility {
public:
    XMLUtility() = default;
    virtual ~XMLUtility() = default;

    // Between two keys. A text shorter than both together yields nothing. Of two keys one may be empty: it
    // stands wherever it is looked for. Two empty keys find nothing.

    /// From the first start key to the last end key behind it: `<a><a>1</a></a>` between `<a>` and `</a>` is
    /// `<a>1</a>`. Leaves `value` as it is when the text is empty or shorter than both keys.
    bool GetValueForOutermostKey(const std::string &text, const std::string &startKey,
                                 const std::string &endKey, std::string &value) const;

    /// From the first start key to the first end key behind it. Callers rely on this: a start key that is
    /// missing is no error, the value then begins where the text begins.
    bool GetValuesInsideKey(const std::string &text, const std::string &startKey, const std::string &endKey,
                            std::string &value) const;

    /// Appends each value between a start key and the next end key, from left to right; they never overlap,
    /// and one that has no end is not a value.
    void GetValuesInsideKeys(const std::string &text, const std::string &startKey, const std::string &endKey,
                             std::vector<std::string> &list) const;

    /// The same, each with its two keys.
    void GetValuesBetweenKeys(const std::string &text, const std::string &startKey, const std::string &endKey,
                              std::vector<std::string> &list) const;

    // Tags, attributes, CDATA. These empty `list` first.

    /// What stands between the first `<name>` and the last `</name>`. Only a tag without attributes is found.
    bool GetValueForOutermostTag(const std::string &text, const std::string &name, std::string &value) const;

    /// What stands between each `<name>` and the next `</name>`. Only tags without attributes are found.
    void GetValuesForTag(const std::string &text, const std::string &name,
                         std::vector<std::string> &list) const;

    /// Each element with attributes, whole: from `<name ` to the next `</name>`.
    void GetValuesWithElement(const std::string &text, const std::string &name,
                              std::vector<std::string> &list) const;

    /// The first value written `name="value"`, in whatever element or content. Single quotes and blanks
    /// around the equals sign are not recognised. Ask only for attributes that are there: for one that is
    /// not, the value is all from the text's beginning to its first double quote. Leaves `value` as it is
    /// when the text or the name is empty.
    bool GetAttribute(const std::string &text, const std::string &name, std::string &value) const;

    /// Every value written `name="value"`.
    void GetAttributes(const std::string &text, const std::string &name,
                       std::vector<std::string> &list) const;

    /// The content of the first CDATA section; empty when there is none.
    void GetValueInsideCDATA(const std::string &text, std::string &value) const;

    // Replacing, escaping, unescaping.

    /// Every occurrence of `search` replaced, from left to right; what is inserted is not looked at again, so
    /// that "aaa" with "aa" for "a" is "aaaaaa". Nothing to look for is nothing done: `out` is empty when
    /// `search` is.
    void ReplaceAllString(const std::string &text, const std::string &search, const std::string &replacement,
                          std::string &out) const;

    /// Escapes & " ' < > as named entities, carriage return and line feed as &#13; and &#10;; other bytes
    /// pass. False (and an empty `out`) for an empty text only. `a<b & c` is `a&lt;b &amp; c`.
    bool ConvertStringUTF8ToEntityReference(const std::string &text, std::string &out) const;

    /// Leaves `out` as it is: no character needs a numeric reference. True.
    bool ConvertStringUTF8ToCharacterReference(const std::string &text, std::string &out) const;

    /// ConvertStringUTF8ToEntityReference, which is all the escaping there is.
    bool ConvertStringUTF8ToReference(const std::string &text, std::string &out) const;

    /// Resolves &quot; &amp; &apos; &lt; &gt;, in this order, each over the result of the one before. Callers
    /// rely on what follows from it: `&amp;lt;` is `<`, while `&amp;quot;` is `&quot;`. False for an empty
    /// text only.
    bool ConvertStringEntityReferenceToUTF8(const std::string &text, std::string &out) const;

    /// Removes numeric references, from `&#` to the next `;`: `A&#65;B&#x42;C` is `ABC`. Their characters are
    /// lost; callers rely on it. A `&#` without `;` loses only these two bytes, and a `&#` at the very end
    /// stays. False (and an empty `out`) for an empty text and when memory runs out.
    bool ConvertStringCharacterReferenceToUTF8(const std::string &text, std::string &out) const;

    /// ConvertStringCharacterReferenceToUTF8, then ConvertStringEntityReferenceToUTF8; so the line ends that
    /// escaping wrote as references are dropped. False (and an empty `out`) when either says so.
    bool ConvertStringReferenceToUTF8(const std::string &text, std::string &out) const;
};

#endif
