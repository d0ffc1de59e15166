/// @file
/// Wide text: the view `PLiteral`, the owner `PString`, and the static conversions of `PUtils`.
///
/// A wide character is a `wchar_t` of four bytes. Where a text becomes bytes or is made from bytes,
/// that is multibyte text in the character-type locale of the process (of the calling thread, where
/// `uselocale` gave it one of its own), which the library never sets. White space, where text is
/// trimmed or split, is exactly tab, line feed, carriage return and space.
#ifndef PORTINGLAYER_STRINGS_H
#define PORTINGLAYER_STRINGS_H

#include <cstdarg>

#include <portinglayer/export.h>
#include <portinglayer/result_codes.h>

/// Whole-string length: given as a length it means "measure the text up to its terminator". It is
/// the 32-bit all-ones value, not the 64-bit one.
inline constexpr unsigned long P_WHOLE_STRING = 4294967295UL;

class PString;

/// A read-only view of wide text: a pointer, which may be null, and a length. It owns nothing: the
/// characters stay the caller's and must outlive the view, and copying a view copies no characters.
/// It is what every operation of the library takes as text; a `PString` can be given wherever a
/// `PLiteral` is wanted.
///
/// Threads: reading operations from any thread, as long as nobody changes the view or its text.
class PORTINGLAYER_EXPORT PLiteral {
public:
    /// The empty text: null pointer, length 0.
    PLiteral();

    /// Refers to `s` up to its terminator; a null `s` gives the empty text.
    PLiteral(wchar_t const* s);

    /// Refers to the same characters as `o`.
    PLiteral(PLiteral const& o);

    /// Releases nothing; the characters stay.
    virtual ~PLiteral();

    /// Refers to the same characters as `o`.
    virtual PLiteral& operator=(PLiteral const& o);

    /// Refers to `s` up to its terminator; a null `s` gives the empty text.
    ///
    /// @warning The pointer that is held already changes nothing: the text is not measured anew.
    ///          After editing a buffer in place, make a new `PLiteral`.
    virtual PLiteral& operator=(wchar_t const* s);

    /// The length in wide characters, the terminator not counted.
    unsigned long len() const;
    /// The characters; null for a text that refers to nothing.
    wchar_t const* ptr() const;
    /// As `ptr`.
    operator wchar_t const*() const;

    /// Finds a text in this one.
    ///
    /// @warning From the end, the position counts in 32 bits: where this text is 2 Gi characters
    ///          longer than `what`, the search misses places or finds none. Search such texts
    ///          forward.
    /// @param what        the text to be found
    /// @param[out] pos    index of its first character; written only on success
    /// @param fromEnd     whether the last occurrence is wanted instead of the first
    /// @param ignoreCase  whether characters match that have the same upper case in the locale
    /// @return PERR_OK         found; also for an empty text in an empty one, at 0
    /// @return PERR_NOT_FOUND  not found; also for an empty text in one that is not
    [[nodiscard]] int str(PLiteral const& what, unsigned long& pos, bool fromEnd,
                          bool ignoreCase) const;

    /// Finds a character.
    ///
    /// With `ignoreCase` the upper and the lower case of `c` in the locale are looked for; a
    /// title-case letter, which is neither, is not found itself. The search runs to the terminator,
    /// the first zero character, not to `len()`: the text must have one, and a `c` of 0 is found
    /// there.
    /// @param[out] pos  index of the character; written only on success
    /// @param fromEnd   whether the last occurrence is wanted instead of the first
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  not found, or this text is empty
    [[nodiscard]] int chr(wchar_t c, unsigned long& pos, bool fromEnd, bool ignoreCase) const;

    /// Compares with the first `n` characters of `s`: by length first, then by characters, up to a
    /// zero that both hold at the same place.
    ///
    /// @warning A null `s` is an empty text with an `n` of 0 only; with P_WHOLE_STRING it is
    ///          greater than every text. For a pointer that may be null use the operators.
    /// @warning A shorter text is always the lesser one: "b" comes before "aa". To sort as people
    ///          expect, compare with `wcscoll` on `ptr()`.
    /// @param n  wide characters, or P_WHOLE_STRING
    /// @return 0 when equal, less than 0 when this text is the lesser one, else more than 0
    int cmp(wchar_t const* s, unsigned long n) const;
    /// As above, with the whole of `o`.
    int cmp(PLiteral const& o) const;

    // A plain pointer goes on the right: on the left, C++17 compares its address.
    bool operator==(PLiteral const& o) const;  ///< by `cmp`
    bool operator==(wchar_t const* s) const;   ///< by `cmp`; a null `s` is an empty text
    bool operator!=(PLiteral const& o) const;  ///< by `cmp`
    bool operator!=(wchar_t const* s) const;   ///< by `cmp`; a null `s` is an empty text
    bool operator<(PLiteral const& o) const;   ///< by `cmp`
    bool operator<(wchar_t const* s) const;    ///< by `cmp`; a null `s` is an empty text
    bool operator<=(PLiteral const& o) const;  ///< by `cmp`
    bool operator<=(wchar_t const* s) const;   ///< by `cmp`; a null `s` is an empty text
    bool operator>(PLiteral const& o) const;   ///< by `cmp`
    bool operator>(wchar_t const* s) const;    ///< by `cmp`; a null `s` is an empty text
    bool operator>=(PLiteral const& o) const;  ///< by `cmp`
    bool operator>=(wchar_t const* s) const;   ///< by `cmp`; a null `s` is an empty text

    /// Tells whether this text begins with `s`, in the sense of `str`: an empty or null `s` begins
    /// an empty text only.
    ///
    /// @warning `n` is ignored: `s` counts up to its terminator. To test with a part of it, copy
    ///          the part into a `PString`.
    bool startsWith(wchar_t const* s, unsigned long n, bool ignoreCase) const;
    /// As above, with `p` up to its terminator.
    bool startsWith(PLiteral const& p, bool ignoreCase) const;

    /// Tells whether this text ends with `s`, in the sense of `str`: an empty `s` ends an empty
    /// text only, and so does a null one if `n` is 0, which else ends none.
    ///
    /// @warning `s` counts up to its terminator; an `n` that is not its length gives false answers.
    ///          Give P_WHOLE_STRING.
    bool endsWith(wchar_t const* s, unsigned long n, bool ignoreCase) const;
    /// As above, with `p` and its length.
    ///
    /// @warning A `p` that holds a zero character gives false answers: its length is no longer that
    ///          up to the terminator. Give `p.ptr()` and P_WHOLE_STRING.
    bool endsWith(PLiteral const& p, bool ignoreCase) const;

    /// As `ascii`.
    ///
    /// @warning It converts, and allocates, wherever a `char*` fits: call `ascii` by its name.
    operator char*() const;

    /// Converts this text as `pwchar2pchar` does, and with the same result. Nothing is kept: each
    /// call converts anew.
    char* ascii() const;

    /// Makes multibyte text of wide text, in the locale of the process.
    ///
    /// @warning At most as many bytes are made as there are characters. ASCII passes whole; in
    ///          UTF-8 other text loses its end, before the first character that no longer fits.
    /// @param n  wide characters, or P_WHOLE_STRING
    /// @return a new terminated array that the caller releases with `delete[]`; null when `s` is
    ///         null, `n` is 0, the text is empty, its first character does not fit, the locale
    ///         cannot express a character before the cut, or no memory is left
    static char* pwchar2pchar(wchar_t const* s, unsigned long n);

    /// Makes wide text of multibyte text, in the locale of the process.
    ///
    /// @warning `n` limits the characters made, not the bytes read: `s` must be terminated, unless
    ///          its first `n` bytes are ASCII. Copy and terminate a part of a longer text first.
    /// @param n  wide characters to make at most, such as the number of bytes, or P_WHOLE_STRING
    /// @return a new terminated array that the caller releases with `delete[]`; null when `s` is
    ///         null, `n` is 0, the text is empty, the locale cannot read it, or no memory is left
    static wchar_t* pchar2pwchar(char const* s, unsigned long n);

    /// The upper case of a character in the locale of the process.
    static wchar_t toupper(wchar_t c);
    /// The lower case of a character in the locale of the process.
    static wchar_t tolower(wchar_t c);

    /// Takes the text before the first separator off `src`, and the separator with it.
    ///
    /// Without a separator the token is the whole of `src`, which becomes empty. Two separators in
    /// a row give an empty token, one at the end does not. Only the token is trimmed of white
    /// space; it is an exact copy, while `src` keeps its buffer until it is empty.
    ///
    /// The search ends at the first zero character: what stands behind one within the length is not
    /// split. A `sep` of 0 splits there; the terminator is no separator.
    /// @param[in,out] src  the text that is used up
    /// @param[out] token   another object than `src`
    /// @param sep          the separator
    /// @return PERR_OK
    /// @return PERR_TOKEN  `src` is empty: `token` is left alone; or no memory for the token, which
    ///                     is then empty: `src` is left alone
    [[nodiscard]] static int getNextToken(PString& src, PString& token, wchar_t sep);

protected:
    wchar_t const* text;   ///< may be null; never owned here
    unsigned long length;  ///< wide characters before the terminator; 0 when `text` is null
};

/// Wide text that owns its characters. What makes the text longer copies it into a new buffer of
/// just its length + 1 wide characters. What makes it shorter keeps the room: `trim`, `erase` and
/// `getNextToken` work in place, `stripall` and the shortening `fill` leave a buffer of the old
/// size, and converted multibyte text has some characters to spare. To release such room, move a
/// copy over the text.
///
/// The `ptr()` of an empty text may be null or not; test `len()`, and test before handing it to a
/// "%ls". Wide texts given to an operation may lie in the string itself, multibyte ones not. What
/// refers to its characters, such as a `PLiteral` or `ptr()`, is valid until the next change.
///
/// Constructors and operators cannot tell that memory ran out: the text is then empty, or without
/// what was to be appended. `set` and `cat` tell.
///
/// Threads: one string is used by one thread at a time.
class PORTINGLAYER_EXPORT PString : public PLiteral {
public:
    /// An empty text; nothing is allocated.
    PString();

    /// Copies the first `n` characters of `s`, or with P_WHOLE_STRING all of it.
    PString(wchar_t const* s, unsigned long n);

    /// Converts multibyte text as `pchar2pwchar` does; the length is that of the characters. Text
    /// that cannot be converted gives an empty text.
    ///
    /// @warning `n` limits the characters made, not the bytes read, as there: terminate `s`.
    PString(char const* s, unsigned long n);

    /// Copies the characters of `o`.
    PString(PString const& o);
    /// Copies the characters of `o`.
    PString(PLiteral const& o);
    /// Takes the buffer of `o`, which becomes empty.
    PString(PString&& o) noexcept;

    /// Releases the characters.
    ~PString() override;

    /// Copies the characters of `o`.
    PString& operator=(PLiteral const& o) override;
    /// Copies `s` up to its terminator; a null `s` gives an empty text.
    PString& operator=(wchar_t const* s) override;
    /// Copies the characters of `o`.
    PString& operator=(PString const& o);
    /// Takes the buffer of `o`, which becomes empty.
    PString& operator=(PString&& o) noexcept;

    /// Appends `o` as `cat` does.
    PString& operator+=(PLiteral const& o);
    /// Appends `s` up to its terminator as `cat` does; a null `s` appends nothing.
    PString& operator+=(wchar_t const* s);

    /// Releases the characters: null pointer, length 0.
    void clear();

    /// Appends the first `n` characters of `s`. A null `s` and an `n` of 0 append nothing.
    ///
    /// @param n  wide characters, or P_WHOLE_STRING
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  no memory for the longer text; the text is as it was
    [[nodiscard]] int cat(wchar_t const* s, unsigned long n);
    /// As above, with the whole of `o`.
    [[nodiscard]] int cat(PLiteral const& o);

    /// Appends multibyte text, converted as `pchar2pwchar` does.
    ///
    /// @warning `n` limits the characters made, not the bytes read: `s` must be terminated, unless
    ///          its first `n` bytes are ASCII. A part of text that is not ASCII is read on into
    ///          what follows it. Copy and terminate the part first.
    /// @warning The length grows by `n`, the number of bytes: behind text that is not ASCII, zero
    ///          characters fill the difference. Measure such a text with `wcslen`, or use the
    ///          constructor.
    /// @param n  bytes, or P_WHOLE_STRING for those up to the terminator
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  no memory, the locale cannot read the text, or the text is empty
    ///                         although `n` is not 0; the text is as it was
    [[nodiscard]] int cat(char const* s, unsigned long n);

    /// Replaces the text with the first `n` characters of `s`, which may lie in this text.
    ///
    /// @param n  wide characters, or P_WHOLE_STRING
    /// @return PERR_OK         also for a null `s` and an `n` of 0, which give an empty text
    /// @return PERR_NO_MEMORY  no memory for the new text; the text is empty
    [[nodiscard]] int set(wchar_t const* s, unsigned long n);

    /// Replaces the text with the first `n` characters of `o`.
    ///
    /// @param n  wide characters, or P_WHOLE_STRING for the length of `o`
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  `n` is more than the length of `o`; the text is as it was
    /// @return PERR_NO_MEMORY         no memory for the new text; the text is empty
    [[nodiscard]] int set(PLiteral const& o, unsigned long n);

    /// Replaces the text with multibyte text as the narrow `cat` appends it, whose warnings hold.
    ///
    /// @param n  bytes, or P_WHOLE_STRING for those up to the terminator
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  as from `cat`; the text is empty
    [[nodiscard]] int set(char const* s, unsigned long n);

    /// Puts the first `n` characters of `s` in front of the character at `pos`.
    ///
    /// @param pos  index from 0 to the length, at which they are appended
    /// @param n    wide characters, or P_WHOLE_STRING
    /// @return PERR_OK                also for a null `s` and an `n` of 0, which change nothing
    /// @return PERR_INVALID_ARGUMENT  `pos` is more than the length; nothing changes
    /// @return PERR_NO_MEMORY         no memory for the longer text, which is as it was
    [[nodiscard]] int insert(unsigned long pos, wchar_t const* s, unsigned long n);
    /// As above, with `o`; P_WHOLE_STRING stands for its length.
    ///
    /// @warning `n` is not compared with the length of `o`: more than that reads behind its end.
    [[nodiscard]] int insert(unsigned long pos, PLiteral const& o, unsigned long n);

    /// Takes `count` characters out, from index `pos` on. The buffer keeps its size; taking out all
    /// releases it.
    ///
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  the range ends behind the text; nothing changes
    [[nodiscard]] int erase(unsigned long pos, unsigned long count);

    /// Takes white space off both ends. The buffer keeps its size. Where white space stood in
    /// front, the text then ends at its first zero character, if it holds one.
    ///
    /// @return PERR_OK  always
    [[nodiscard]] int trim();

    /// Takes out all white space. The new buffer keeps the size of the old one.
    ///
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  no memory for the new buffer; nothing changes
    [[nodiscard]] int stripall();

    /// Overwrites every character with `c`.
    ///
    /// @return PERR_OK  always
    [[nodiscard]] int fill(wchar_t c);

    /// Makes a text of `n` times `c`; with an `n` of 0 nothing changes.
    ///
    /// @warning With an `n` below the length, the text ends behind the `n` characters, but `len()`
    ///          stays as it was. `clear` first where the length matters.
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  no memory for a longer text; nothing changes
    [[nodiscard]] int fill(wchar_t c, unsigned long n);

    /// Replaces each `from` with `to`.
    ///
    /// @return PERR_OK  always
    [[nodiscard]] int replace(wchar_t from, wchar_t to);

    /// Copies text into a new array.
    ///
    /// @param n            wide characters, or P_WHOLE_STRING
    /// @param[out] outLen  characters copied; left alone when no memory is left
    /// @return a new terminated array that the caller releases with `delete[]`; null when `s` is
    ///         null or `n` is 0 (then `outLen` is 0), or when no memory is left
    static wchar_t* dupPtr(wchar_t const* s, unsigned long n, unsigned long& outLen);

private:
    friend struct AdoptedText;  // within the library: takes a finished buffer over
};

/// Static conversions between text and values, formatting and parsing helpers; no instances.
///
/// Nothing is kept between calls, so every function may be called from any thread, on outputs of
/// its own; `getHostAddress` is the exception. Texts are read where they stand and never kept.
/// Outputs belong to the caller; text made from a value or a format is assigned through the
/// output's virtual operator. Numbers are read as `swscanf` reads them and written as `swprintf`
/// writes them.
class PORTINGLAYER_EXPORT PUtils {
public:
    PUtils() = delete;

    /// Reads a decimal number at the start of a text, as `swscanf` does with "%d".
    ///
    /// White space, here all that the locale counts as such, and a sign may stand before it, and
    /// whatever follows it is ignored: "12abc" gives 12. The base is always 10.
    /// @warning There is no range check: a number too large for the type gives some other number.
    ///          Where the text comes from outside, let `isDec` be true of at most 9 digits first,
    ///          or read with `strToInt64` and compare.
    /// @param s         the text; scanned up to its terminator
    /// @param[out] out  the number; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  the text is null or empty, or does not begin with a number
    [[nodiscard]] static int strToInt32(PLiteral const& s, int& out);

    /// Reads an unsigned decimal number as `swscanf` does with "%u"; otherwise as `strToInt32`.
    ///
    /// @warning A minus sign is accepted: "-1" gives 4294967295. Test with `isDec` first where that
    ///          must not pass.
    /// @param[out] out  the number; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  the text is null or empty, or does not begin with a number
    [[nodiscard]] static int strToUint32(PLiteral const& s, unsigned int& out);

    /// Reads a decimal number of 64 bits as `swscanf` does with "%lld"; otherwise as `strToInt32`.
    /// A number beyond the range gives the nearest end of it.
    ///
    /// @param[out] out  the number; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  the text is null or empty, or does not begin with a number
    [[nodiscard]] static int strToInt64(PLiteral const& s, long long& out);

    /// Reads an unsigned decimal number of 64 bits as `swscanf` does with "%llu"; otherwise as
    /// `strToUint32`, a minus sign included. A number beyond the range gives the largest one.
    ///
    /// @param[out] out  the number; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  the text is null or empty, or does not begin with a number
    [[nodiscard]] static int strToUint64(PLiteral const& s, unsigned long long& out);

    /// Reads "true" or "false": exactly these words, in lower case, nothing around them.
    ///
    /// @param[out] out  the value; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  any other text
    [[nodiscard]] static int strToBool(PLiteral const& s, bool& out);

    /// Reads a byte from one or two characters, as `swscanf` does with "%x".
    ///
    /// That takes more than digits: " 5" and "+5" give 5, "-1" gives 0xFF, "5x" gives 5. To admit
    /// digits only, test with `isHex` first.
    /// @param[out] out  the byte; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  the text is null, empty or longer than two characters, or "%x"
    ///                          reads nothing from it
    [[nodiscard]] static int hexToByte(PLiteral const& s, char& out);

    /// Gives the value of one hexadecimal digit, of either case.
    ///
    /// @param[out] out  0 to 15; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  `c` is no hexadecimal digit
    [[nodiscard]] static int hexToDec(wchar_t c, char& out);

    /// Tells whether a text consists of the digits 0 to 9.
    ///
    /// @param s          the text; need not be terminated unless `n` is P_WHOLE_STRING
    /// @param n          wide characters to look at, or P_WHOLE_STRING
    /// @param allowSign  whether the first character may be '+' or '-'
    /// @return true when each character passes, also when `n` is 0 and when a sign stands alone;
    ///         false for a null text with any other `n`
    static bool isDec(wchar_t const* s, unsigned long n, bool allowSign);

    /// Tells whether a text consists of hexadecimal digits of either case; a prefix is none.
    ///
    /// @param s  the text; need not be terminated unless `n` is P_WHOLE_STRING
    /// @param n  wide characters to look at, or P_WHOLE_STRING
    /// @return true when each character passes, also when `n` is 0; false for a null text with any
    ///         other `n`
    static bool isHex(wchar_t const* s, unsigned long n);

    /// Writes a number in decimal digits, with a minus sign if it is negative.
    ///
    /// @param[out] out  the text
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  the text could not be allocated; `out` is empty
    [[nodiscard]] static int int32ToStr(int v, PString& out);

    /// Writes a number in decimal digits.
    ///
    /// @param[out] out  the text
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  the text could not be allocated; `out` is empty
    [[nodiscard]] static int uint32ToStr(unsigned int v, PString& out);

    /// Writes a number in decimal digits, with a minus sign if it is negative.
    ///
    /// @param[out] out  the text
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  the text could not be allocated; `out` is empty
    [[nodiscard]] static int int64ToStr(long long v, PString& out);

    /// Writes a number in decimal digits.
    ///
    /// @param[out] out  the text
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  the text could not be allocated; `out` is empty
    [[nodiscard]] static int uint64ToStr(unsigned long long v, PString& out);

    /// Writes "true" or "false".
    ///
    /// @param[out] out  the word; empty when no memory was left for it, which has no code here
    /// @return PERR_OK  always
    [[nodiscard]] static int boolToStr(bool v, PString& out);

    /// Writes bytes as text: "0xAB, 0x01".
    ///
    /// @param data      the bytes
    /// @param n         how many
    /// @param[out] out  6 * n - 2 wide characters, digits in upper case
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  `data` is null or `n` is 0; `out` is left alone
    /// @return PERR_NO_MEMORY         the text could not be built (`out` is left alone) or copied
    ///                                (`out` is empty)
    [[nodiscard]] static int binaryToStr(unsigned char const* data, unsigned long n, PString& out);

    /// Reads bytes from text as `binaryToStr` writes it.
    ///
    /// Items are "0x" (in lower case) and one or two characters that `hexToByte` accepts, with a
    /// comma between two of them and, if wanted, behind the last. White space may stand before an
    /// item and at the end of the text; between an item and its comma only one character of it,
    /// behind a single digit. A text of nothing but white space gives no bytes, and is no failure.
    /// @param[out] out     a new array of exactly `outLen` bytes, also when that is 0; the caller
    ///                     releases it with `delete[]`
    /// @param[out] outLen  bytes in `out`
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  the text is null or empty, or an item lacks its "0x", is empty, too
    ///                          long or no number
    /// @return PERR_NO_MEMORY   an array could not be allocated
    /// On failure both outputs are left alone.
    [[nodiscard]] static int strToBinary(PLiteral const& s, unsigned char*& out,
                                         unsigned long& outLen);

    /// Formats as `vswprintf` does, into a room of the format's length + 2048 wide characters.
    ///
    /// The room counts the terminator, and the output is cut to it: the longest text has the
    /// format's length + 2047 characters. Where a conversion fails ("%s" of bytes that the locale
    /// cannot read) the text ends before it. Neither is a failure.
    /// @warning Text from outside never belongs into `format`; give it as an argument of "%ls".
    ///          Long text is cut without notice: join it with `PString::cat` instead.
    /// @param[out] out  the text. Its former text stays alive during the call, so that an argument
    ///                  or the format may point into it; `out` itself as the format is an empty
    ///                  one.
    /// @param format    terminated; a null one gives an empty text
    /// @param args      as `vswprintf` takes them; indeterminate afterwards
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  no memory for the room or the text; `out` is empty
    [[nodiscard]] static int vformatString(PString& out, PLiteral const& format, va_list args);

    /// As `vformatString`, with the arguments in the call.
    ///
    /// @warning The compiler does not check the arguments of a wide format: "%s" takes a `char*`,
    ///          "%ls" a `wchar_t*`, and a `PString` must be given as its `ptr()`.
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  no memory for the room or the text; `out` is empty
    [[nodiscard]] static int pformatString(PString& out, wchar_t const* format, ...);

    /// Splits a text at its first separator and trims both halves.
    ///
    /// Later separators stay in the value: "a = b=c" gives "a" and "b=c". `text` may be one of the
    /// outputs. With one object as both outputs it ends with the value.
    ///
    /// The search ends at the first zero character: a separator behind one is not found. A `sep` of
    /// 0 splits there; the terminator is no separator.
    /// @param text        the text; terminated
    /// @param[out] key    what stands before the separator, possibly nothing
    /// @param[out] value  what stands behind it, possibly nothing
    /// @param sep         the separator
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  the text holds no separator; both outputs are left alone
    /// @return PERR_NO_MEMORY  a half could not be copied: `key` is empty and `value` left alone,
    ///                         or `key` is set and `value` empty
    [[nodiscard]] static int getKeyValue(PLiteral const& text, PString& key, PString& value,
                                         wchar_t sep);

    /// Turns the arguments of a program into texts that `getKeyValue` can split.
    ///
    /// Each is converted from multibyte text in the current locale; one that cannot be is empty, as
    /// is a null one. Where the first, the program's path, holds no separator, it becomes the pair
    /// "process.name", separator, path; the path is empty where it cannot be converted.
    /// @param argc           arguments in `argv`; 0 gives an empty array that must be released, too
    /// @param argv           multibyte texts
    /// @param[out] out       a new array; the caller releases it with `delete[]`
    /// @param[out] outCount  elements in `out`; written only on success
    /// @param sep            the separator
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  the array or a text could not be allocated, or `argc` is negative;
    ///                         `out` is null, `outCount` is left alone
    [[nodiscard]] static int convertArgs(int argc, char** argv, PString*& out,
                                         unsigned long& outCount, wchar_t sep);

    /// Fails: a link text names a program by the extension that executables have on other
    /// platforms.
    ///
    /// @param[out] path  cleared
    /// @param[out] args  cleared
    /// @return PERR_INVALID_ARGUMENT  always
    [[nodiscard]] static int parseLink(PLiteral const& link, PString& path, PString& args);

    /// Turns every backslash of a path into a slash. Each operation that takes the path of a file
    /// or program does so itself.
    ///
    /// @warning A name that holds a backslash, which Linux allows, is turned into another one.
    /// @return PERR_OK  always
    [[nodiscard]] static int fixFileSeparator(PString& path);

    /// Appends the platform's extension of executables, which is empty here: nothing changes.
    ///
    /// @return PERR_OK  always
    [[nodiscard]] static int fixExecFileExtension(PString& path);

    /// Gives the address under which this machine is reached.
    ///
    /// The environment variable TALV_HOST_IP is the answer where it is set: its text as it stands,
    /// unchecked, also an empty one (converted as by the narrow `PString::set`, so that text beyond
    /// ASCII has a length of its bytes, and text that the locale cannot read gives an empty one).
    /// Where no memory is left for the text, `out` is empty and the code is PERR_OK, too.
    /// Otherwise the host's name, completed by the resolver if it has no dot, is looked up, and the
    /// first IPv4 address of the answer is given in dotted form.
    /// @warning On many machines the own name leads to a loopback address such as 127.0.1.1, and
    ///          that is given. Set TALV_HOST_IP where other machines must use the answer.
    /// @param[out] out  the address; left alone on failure
    /// @return PERR_OK
    /// @return PERR_SYSTEM     the name could not be read, completed or resolved; most resolvers
    ///                         cannot complete an empty one
    /// @return PERR_NOT_FOUND  the host's name is empty, and the resolver had no better one
    /// Threads: completing a name goes through the resolver's shared entry; call from one at
    /// a time.
    /// Blocks: as long as the resolver does, which may ask name servers.
    [[nodiscard]] static int getHostAddress(PString& out);
};

#endif
