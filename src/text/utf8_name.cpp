#include "text/utf8_name.h"

#include <cwchar>

#include <portinglayer/utf8.h>

int _utf8Text(PLiteral const& text, std::string& bytes) {
    if (text.len() > 0 && wmemchr(text.ptr(), L'\0', text.len()) != nullptr)
        return PERR_INVALID_ARGUMENT;
    return PUtf8::encode(text, bytes);
}

int _utf8Name(PLiteral const& name, std::string& bytes) {
    return name.len() == 0 ? PERR_INVALID_ARGUMENT : _utf8Text(name, bytes);
}
