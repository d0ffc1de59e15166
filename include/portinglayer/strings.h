/// @file
/// Wide text: the view `PLiteral`, the owner `PString`, and the static conversions of `PUtils`.
#ifndef PORTINGLAYER_STRINGS_H
#define PORTINGLAYER_STRINGS_H

#include <cstdarg>

#include <portinglayer/export.h>
#include <portinglayer/result_codes.h>

/// Whole-string length: given as a length it means "measure the text up to its terminator". It is
/// the 32-bit all-ones value, not the 64-bit one.
constexpr unsigned long P_WHOLE_STRING = 4294967295UL;

class PString;

/// A read-only view of wide text: pointer and length, nothing owned.
class PORTINGLAYER_EXPORT PLiteral {
public:
    PLiteral();
    PLiteral(wchar_t const* s);
    PLiteral(PLiteral const& o);
    virtual ~PLiteral();

    virtual PLiteral& operator=(PLiteral const& o);
    virtual PLiteral& operator=(wchar_t const* s);

    unsigned long len() const;
    wchar_t const* ptr() const;
    operator wchar_t const*() const;

    int str(PLiteral const& what, unsigned long& pos, bool fromEnd, bool ignoreCase) const;
    int chr(wchar_t c, unsigned long& pos, bool fromEnd, bool ignoreCase) const;

    int cmp(wchar_t const* s, unsigned long n) const;
    int cmp(PLiteral const& o) const;

    bool operator==(PLiteral const& o) const;
    bool operator==(wchar_t const* s) const;
    bool operator!=(PLiteral const& o) const;
    bool operator!=(wchar_t const* s) const;
    bool operator<(PLiteral const& o) const;
    bool operator<(wchar_t const* s) const;
    bool operator<=(PLiteral const& o) const;
    bool operator<=(wchar_t const* s) const;
    bool operator>(PLiteral const& o) const;
    bool operator>(wchar_t const* s) const;
    bool operator>=(PLiteral const& o) const;
    bool operator>=(wchar_t const* s) const;

    bool startsWith(wchar_t const* s, unsigned long n, bool ignoreCase) const;
    bool startsWith(PLiteral const& p, bool ignoreCase) const;
    bool endsWith(wchar_t const* s, unsigned long n, bool ignoreCase) const;
    bool endsWith(PLiteral const& p, bool ignoreCase) const;

    operator char*() const;
    char* ascii() const;

    static char* pwchar2pchar(wchar_t const* s, unsigned long n);
    static wchar_t* pchar2pwchar(char const* s, unsigned long n);
    static wchar_t toupper(wchar_t c);
    static wchar_t tolower(wchar_t c);
    static int getNextToken(PString& src, PString& token, wchar_t sep);

protected:
    wchar_t const* text;   ///< may be null; never owned here
    unsigned long length;  ///< wide characters before the terminator; 0 when `text` is null
};

/// Wide text that owns its characters: a buffer of exactly length + 1 wide characters.
class PORTINGLAYER_EXPORT PString : public PLiteral {
public:
    PString();
    PString(wchar_t const* s, unsigned long n);
    PString(char const* s, unsigned long n);
    PString(PString const& o);
    PString(PLiteral const& o);
    PString(PString&& o) noexcept;
    ~PString() override;

    PString& operator=(PLiteral const& o) override;
    PString& operator=(wchar_t const* s) override;
    PString& operator=(PString const& o);
    PString& operator=(PString&& o) noexcept;
    PString& operator+=(PLiteral const& o);
    PString& operator+=(wchar_t const* s);

    void clear();
    int cat(wchar_t const* s, unsigned long n);
    int cat(PLiteral const& o);
    int cat(char const* s, unsigned long n);
    int set(wchar_t const* s, unsigned long n);
    int set(PLiteral const& o, unsigned long n);
    int set(char const* s, unsigned long n);
    int insert(unsigned long pos, wchar_t const* s, unsigned long n);
    int insert(unsigned long pos, PLiteral const& o, unsigned long n);
    int erase(unsigned long pos, unsigned long count);
    int trim();
    int stripall();
    int fill(wchar_t c);
    int fill(wchar_t c, unsigned long n);
    int replace(wchar_t from, wchar_t to);

    static wchar_t* dupPtr(wchar_t const* s, unsigned long n, unsigned long& outLen);
};

/// Static conversions between text and values, formatting and parsing helpers; no instances.
///
/// Nothing is kept between calls, so every function may be called from any thread, on outputs of its
/// own; `getHostAddress` is the exception. Texts are read where they stand and never kept. Outputs
/// belong to the caller; an output that is a text is assigned through its virtual operator. Numbers
/// are read as `swscanf` reads them and written as `swprintf` writes them.
class PORTINGLAYER_EXPORT PUtils {
public:
    PUtils() = delete;

    /// Reads a decimal number at the start of a text, as `swscanf` does with "%d".
    ///
    /// White space and a sign may stand before it, and whatever follows it is ignored: "12abc" gives
    /// 12. The base is always 10.
    /// @warning There is no range check: a number too large for the type gives some other number.
    ///          Where the text comes from outside, test it with `isDec` and its length first.
    /// @param s         the text; scanned up to its terminator
    /// @param[out] out  the number; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  the text is null or empty, or does not begin with a number
    static int strToInt32(PLiteral const& s, int& out);

    /// Reads an unsigned decimal number as `swscanf` does with "%u"; otherwise as `strToInt32`.
    ///
    /// @warning A minus sign is accepted: "-1" gives 4294967295. Test with `isDec` first where that
    ///          must not pass.
    /// @param[out] out  the number; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  the text is null or empty, or does not begin with a number
    static int strToUint32(PLiteral const& s, unsigned int& out);

    /// Reads a decimal number of 64 bits as `swscanf` does with "%lld"; otherwise as `strToInt32`.
    /// A number beyond the range gives the nearest end of it.
    ///
    /// @param[out] out  the number; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  the text is null or empty, or does not begin with a number
    static int strToInt64(PLiteral const& s, long long& out);

    /// Reads an unsigned decimal number of 64 bits as `swscanf` does with "%llu"; otherwise as
    /// `strToUint32`, a minus sign included. A number beyond the range gives the largest one.
    ///
    /// @param[out] out  the number; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  the text is null or empty, or does not begin with a number
    static int strToUint64(PLiteral const& s, unsigned long long& out);

    /// Reads "true" or "false": exactly these words, in lower case, nothing around them.
    ///
    /// @param[out] out  the value; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  any other text
    static int strToBool(PLiteral const& s, bool& out);

    /// Reads a byte from one or two characters, as `swscanf` does with "%x".
    ///
    /// That accepts more than two digits of the alphabet: " 5" and "+5" give 5, "-1" gives 0xFF, "5x"
    /// gives 5. To admit digits only, test with `isHex` first.
    /// @param[out] out  the byte; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  the text is null, empty or longer than two characters, or "%x" reads
    ///                          nothing from it
    static int hexToByte(PLiteral const& s, char& out);

    /// Gives the value of one hexadecimal digit, of either case.
    ///
    /// @param[out] out  0 to 15; written only on success
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  `c` is no hexadecimal digit
    static int hexToDec(wchar_t c, char& out);

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
    static int int32ToStr(int v, PString& out);

    /// Writes a number in decimal digits; codes as `int32ToStr`.
    static int uint32ToStr(unsigned int v, PString& out);

    /// Writes a number in decimal digits, with a minus sign if it is negative; codes as `int32ToStr`.
    static int int64ToStr(long long v, PString& out);

    /// Writes a number in decimal digits; codes as `int32ToStr`.
    static int uint64ToStr(unsigned long long v, PString& out);

    /// Writes "true" or "false".
    ///
    /// @param[out] out  the word; empty when no memory was left for it, which has no code here
    /// @return PERR_OK  always
    static int boolToStr(bool v, PString& out);

    /// Writes bytes as text: "0xAB, 0x01".
    ///
    /// @param data      the bytes
    /// @param n         how many
    /// @param[out] out  6 * n - 2 wide characters, digits in upper case
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  `data` is null or `n` is 0; `out` is left alone
    /// @return PERR_NO_MEMORY         the text could not be built (`out` is left alone) or copied
    ///                                (`out` is empty)
    static int binaryToStr(unsigned char const* data, unsigned long n, PString& out);

    /// Reads bytes from text as `binaryToStr` writes it.
    ///
    /// Items are "0x" (in lower case) and one or two characters that `hexToByte` accepts, with a
    /// comma between two of them and, if wanted, behind the last. White space may stand before an
    /// item and at the end of the text; between an item and its comma it is refused. A text of
    /// nothing but white space gives no bytes, and is no failure.
    /// @param[out] out     a new array of exactly `outLen` bytes, also when that is 0; the caller
    ///                     releases it with `delete[]`
    /// @param[out] outLen  bytes in `out`
    /// @return PERR_OK
    /// @return PERR_BAD_FORMAT  the text is null or empty, or an item lacks its "0x", is empty, too
    ///                          long or no number
    /// @return PERR_NO_MEMORY   an array could not be allocated
    /// On failure both outputs are left alone.
    static int strToBinary(PLiteral const& s, unsigned char*& out, unsigned long& outLen);

    /// Formats as `vswprintf` does, into a room of the format's length + 2048 wide characters.
    ///
    /// The room counts the terminator, and the output is cut to it: the longest text has the
    /// format's length + 2047 characters. Where a conversion fails ("%s" of bytes that the locale
    /// cannot read) the text ends before it. Neither is a failure.
    /// @warning Text from outside never belongs into `format`; give it as an argument of "%ls".
    ///          Long text is cut without notice: join it with `PString::cat` instead.
    /// @param[out] out  the text. Its former text stays alive during the call, so that an argument or
    ///                  the format may point into it; `out` itself as the format is an empty one.
    /// @param format    terminated; a null one gives an empty text
    /// @param args      as `vswprintf` takes them; indeterminate afterwards
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  no memory for the room or the text; `out` is empty
    static int vformatString(PString& out, PLiteral const& format, va_list args);

    /// As `vformatString`, with the arguments in the call.
    ///
    /// @warning The compiler does not check the arguments of a wide format: "%s" takes a `char*`,
    ///          "%ls" a `wchar_t*`, and a `PString` must be given as its `ptr()`.
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  no memory for the room or the text; `out` is empty
    static int pformatString(PString& out, wchar_t const* format, ...);

    /// Splits a text at its first separator and trims both halves.
    ///
    /// Later separators stay in the value: "a = b=c" gives "a" and "b=c". `text` may be one of the
    /// outputs; the outputs must be two objects.
    /// @param sep         the separator; 0 is never found
    /// @param[out] key    what stands before it, possibly nothing
    /// @param[out] value  what stands behind it, possibly nothing
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  the text holds no separator; both outputs are left alone
    /// @return PERR_NO_MEMORY  a half could not be copied: `key` is empty and `value` left alone, or
    ///                         `key` is set and `value` empty
    static int getKeyValue(PLiteral const& text, PString& key, PString& value, wchar_t sep);

    /// Turns the arguments of a program into texts that `getKeyValue` can split.
    ///
    /// Each is converted from multibyte text in the current locale; one that cannot be is empty, as
    /// is a null one. Where the first, the program's path, holds no separator, it becomes the pair
    /// "process.name", separator, path.
    /// @param argc           arguments in `argv`; 0 gives an empty array that must be released, too
    /// @param argv           multibyte texts
    /// @param[out] out       a new array; the caller releases it with `delete[]`
    /// @param[out] outCount  elements in `out`; written only on success
    /// @param sep            the separator
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY  the array or a text could not be allocated, or `argc` is negative;
    ///                         `out` is null
    static int convertArgs(int argc, char** argv, PString*& out, unsigned long& outCount,
                           wchar_t sep);

    /// Fails: a link text names a program by the extension that executables have on other platforms.
    ///
    /// @param[out] path  cleared
    /// @param[out] args  cleared
    /// @return PERR_INVALID_ARGUMENT  always
    static int parseLink(PLiteral const& link, PString& path, PString& args);

    /// Turns every backslash of a path into a slash. Each operation that takes the path of a file or
    /// program does so itself.
    ///
    /// @warning A name that holds a backslash, which Linux allows, is turned into another one.
    /// @return PERR_OK  always
    static int fixFileSeparator(PString& path);

    /// Appends the platform's extension of executables, which is empty here: nothing changes.
    ///
    /// @return PERR_OK  always
    static int fixExecFileExtension(PString& path);

    /// Gives the address under which this machine is reached.
    ///
    /// The environment variable TALV_HOST_IP is the answer where it is set: its text as it stands,
    /// unchecked, also an empty one (converted as by the narrow `PString::set`, so that text beyond
    /// ASCII has a length of its bytes, and text that the locale cannot read gives an empty one).
    /// Otherwise the host's name, completed by the resolver if it has no dot, is looked up, and the
    /// first IPv4 address of the answer is given in dotted form.
    /// @warning On many machines the own name leads to a loopback address such as 127.0.1.1, and that
    ///          is given. Set TALV_HOST_IP where other machines must use the answer.
    /// @param[out] out  the address; left alone on failure
    /// @return PERR_OK
    /// @return PERR_SYSTEM     the name could not be read, completed or resolved
    /// @return PERR_NOT_FOUND  the host's name is empty
    /// Threads: completing a name goes through the resolver's shared entry; call from one at a time.
    /// Blocks: as long as the resolver does, which may ask name servers.
    static int getHostAddress(PString& out);
};

#endif
