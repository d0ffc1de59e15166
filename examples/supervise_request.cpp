/// How `supervise` reads its command line.
#include "supervise.h"

namespace {

bool _readSeconds(PString const& text, Request& request) {
    request.limited = true;
    return text.len() > 0 && text.len() < 8 && PUtils::isDec(text.ptr(), text.len(), false) &&
           PUtils::strToUint32(text, request.seconds) == PERR_OK;
}

/// Takes `--name value`; false when `name` is unknown or the value is not valid.
bool _readOption(PString const& name, PString const& value, Request& request) {
    unsigned long equals = 0;
    if (name == L"--seconds") return _readSeconds(value, request);
    if (name == L"--dir") return request.dir.set(value, P_WHOLE_STRING) == PERR_OK;
    if (name != L"--env" || value.chr(L'=', equals, false, false) != PERR_OK) return false;
    request.environment.push_back(value);
    return true;
}

/// The library parts a program's arguments at every space, so none can hold one.
bool _addArgument(PString const& argument, Request& request) {
    unsigned long space = 0;
    if (argument.len() == 0 || argument.chr(L' ', space, false, false) == PERR_OK) return false;
    if (request.arguments.len() > 0) request.arguments += L" ";
    request.arguments += argument;
    return true;
}

}  // namespace

bool readRequest(int argc, char** argv, Request& request) {
    PString* words = nullptr;
    unsigned long count = 0;
    if (PUtils::convertArgs(argc, argv, words, count, L'=') != PERR_OK) return false;
    PPtr<PString> const owner(words, PPtr<PString>::ARRAY);

    unsigned long i = 1;
    for (; i < count && words[i].startsWith(L"--", P_WHOLE_STRING, false); i += 2) {
        if (i + 1 == count || !_readOption(words[i], words[i + 1], request)) return false;
    }
    if (i >= count || words[i].len() == 0) return false;

    request.program = words[i];
    while (++i < count) {
        if (!_addArgument(words[i], request)) return false;
    }
    return true;
}
