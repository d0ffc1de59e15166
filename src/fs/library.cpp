#include <dlfcn.h>

#include <cstdio>
#include <memory>
#include <new>

#include <portinglayer/libraries.h>

#include "sync/uncancelled.h"
#include "text/narrow_text.h"

PLibrary::PLibrary() : unloadOnDestroy(true), handle(nullptr) {
}

PLibrary::~PLibrary() {
    Uncancelled const untilUnloaded;
    if (handle != nullptr && unloadOnDestroy) (void)dlclose(handle);  // nobody is left to be told
    handle = nullptr;
}

int PLibrary::load(PLiteral const& newName, PLibrary*& library, bool unload) {
    NarrowText const file(newName);
    Uncancelled const untilLoaded;  // the loader holds its lock while a library starts up
    void* const loaded = dlopen(file.get(), RTLD_LAZY);  // null names the main program
    if (loaded == nullptr) {
        (void)fprintf(stderr,
                      "\n[tALV][ERR] [PLibrary::load] dlopen('%s', RTLD_LAZY) failed! "
                      "dlerror: %s\n\n",
                      file.get(), dlerror());
        (void)fflush(stderr);
        return PERR_LIBRARY_LOAD;
    }
    std::unique_ptr<PLibrary> made(new (std::nothrow) PLibrary);
    if (!made || made->name.set(newName, P_WHOLE_STRING) != PERR_OK) return PERR_NO_MEMORY;
    made->handle = loaded;
    made->unloadOnDestroy = unload;
    library = made.release();
    return PERR_OK;
}

void* PLibrary::getFunction(char const* symbol) {
    return handle != nullptr && symbol != nullptr ? dlsym(handle, symbol) : nullptr;
}

PString const& PLibrary::getName() const {
    return name;
}

void PLibrary::fixLibName(PString& libraryName) {
    if (!libraryName.startsWith(L"lib", P_WHOLE_STRING, true))
        (void)libraryName.insert(0, L"lib", P_WHOLE_STRING);
    if (!libraryName.endsWith(L".so", P_WHOLE_STRING, true)) (void)libraryName.cat(L".so");
}
