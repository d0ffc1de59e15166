/// @file
/// Whole conversions between wide text and UTF-8, whatever the locale of the process is.
#ifndef PORTINGLAYER_UTF8_H
#define PORTINGLAYER_UTF8_H

#include <string>

#include <portinglayer/strings.h>

/// Static conversions between wide text and UTF-8; no instances.
///
/// The locale of the process plays no part, nothing is cut, and zero characters pass like any
/// other. What is no text is refused as a whole: a surrogate, a value above U+10FFFF, bytes that
/// are not well-formed. An output is written only on success.
///
/// Threads: nothing is kept between calls; from any thread, on outputs of its own.
class PORTINGLAYER_EXPORT PUtf8 {
public:
    PUtf8() = delete;

    /// Makes UTF-8 of all `len()` characters of a text.
    ///
    /// @param[out] bytes  the form of the text, and nothing else; empty for an empty text
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  a character is a surrogate or above U+10FFFF
    /// @return PERR_NO_MEMORY   no memory for the bytes
    [[nodiscard]] static int encode(PLiteral const& text, std::string& bytes);

    /// Makes wide text of well-formed UTF-8.
    ///
    /// @warning An `n` that was read from a stream may be 4294967295, which is P_WHOLE_STRING: the
    ///          bytes are then read up to a zero, wherever it is. Refuse such an `n` before.
    /// @param bytes      may be null where `n` is 0
    /// @param n          bytes, zeros among them too, or P_WHOLE_STRING for all up to the first
    ///                   zero
    /// @param[out] text  one character for each that is encoded; empty when there are no bytes
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  `bytes` is null and `n` is not 0
    /// @return PERR_BAD_FORMAT        overlong forms, surrogates, values above U+10FFFF, a
    ///                                character that is cut, a byte that begins none
    /// @return PERR_NO_MEMORY         no memory for the text
    [[nodiscard]] static int decode(char const* bytes, unsigned long n, PString& text);

    /// Fits a text for the operations that cut multibyte text at its count of characters, which is
    /// what those of the other classes do that take a name, write a line or write a string into a
    /// stream: appends as many `x` as the UTF-8 form of the text has bytes more than characters. In
    /// a UTF-8 locale the cut then takes off exactly these, and the text arrives whole.
    ///
    /// A text that is all ASCII stays as it is. The form that streams and files are given is that
    /// of the text itself: who reads it needs no padding and sees none.
    /// @warning Only for what is cut: in a locale that is not UTF-8, and with the operations of
    ///          PUtf8, PCommand, PReplacement and PFileLock, the `x` stay. Not for the path of
    ///          PFile::removeAll, the prefix of a PTempFile and the name of a safe write either,
    ///          which are continued behind the padding.
    /// @warning Pad one argument of a PProcess at a time, then join them by single spaces, and no
    ///          text that ends in white space where a class trims it (the program, the folder and
    ///          the arguments of a PProcess): the padding hides the end from the trimming.
    /// @param[out] fitted  may be `text` itself
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  the text holds a zero character, at which it would be cut;
    ///                                tested first
    /// @return PERR_BAD_FORMAT        a character is a surrogate or above U+10FFFF
    /// @return PERR_NO_MEMORY         no memory for the longer text
    [[nodiscard]] static int padded(PLiteral const& text, PString& fitted);
};

#endif
