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

/// Static conversions between text and values, formatting and parsing helpers. No instances.
class PORTINGLAYER_EXPORT PUtils {
public:
    PUtils() = delete;

    static int strToInt32(PLiteral const& s, int& out);
    static int strToUint32(PLiteral const& s, unsigned int& out);
    static int strToInt64(PLiteral const& s, long long& out);
    static int strToUint64(PLiteral const& s, unsigned long long& out);
    static int strToBool(PLiteral const& s, bool& out);
    static int hexToByte(PLiteral const& s, char& out);
    static int hexToDec(wchar_t c, char& out);
    static bool isDec(wchar_t const* s, unsigned long n, bool allowSign);
    static bool isHex(wchar_t const* s, unsigned long n);
    static int int32ToStr(int v, PString& out);
    static int uint32ToStr(unsigned int v, PString& out);
    static int int64ToStr(long long v, PString& out);
    static int uint64ToStr(unsigned long long v, PString& out);
    static int boolToStr(bool v, PString& out);
    static int binaryToStr(unsigned char const* data, unsigned long n, PString& out);
    static int strToBinary(PLiteral const& s, unsigned char*& out, unsigned long& outLen);

    static int vformatString(PString& out, PLiteral const& format, va_list args);
    static int pformatString(PString& out, wchar_t const* format, ...);
    static int getKeyValue(PLiteral const& text, PString& key, PString& value, wchar_t sep);
    static int convertArgs(int argc, char** argv, PString*& out, unsigned long& outCount,
                           wchar_t sep);
    static int parseLink(PLiteral const& link, PString& path, PString& args);
    static int fixFileSeparator(PString& path);
    static int fixExecFileExtension(PString& path);

    static int getHostAddress(PString& out);
};

#endif
