/// @file
/// Loading dynamic libraries at run time.
#ifndef PORTINGLAYER_LIBRARIES_H
#define PORTINGLAYER_LIBRARIES_H

#include <portinglayer/export.h>
#include <portinglayer/result_codes.h>
#include <portinglayer/strings.h>

/// A dynamic library that was loaded at run time.
///
/// Objects come from `load` and belong to the caller, who deletes them; an object made without it
/// holds no library. Destruction unloads the library if `load` was told so. Addresses of its
/// functions and data are valid only while the library stays loaded. One thread at a time uses an
/// object; loading in several threads at once is safe.
class PORTINGLAYER_EXPORT PLibrary {
public:
    /// An object that holds no library.
    PLibrary();

    PLibrary(PLibrary const&) = delete;
    PLibrary& operator=(PLibrary const&) = delete;

    /// Gives the library back to the loader, which unloads it when nobody else holds it; leaves it
    /// loaded for the rest of the process if `load` was told so. Not a cancellation point.
    virtual ~PLibrary();

    /// Loads a library, resolving its functions as they are first called.
    ///
    /// The name is used as it stands: one with a slash is a path, one without is searched as the
    /// system's loader does. It reaches the loader as names of files do: text beyond ASCII is cut
    /// in a multibyte locale. Empty text, and text that the locale cannot express, gives the main
    /// program itself.
    /// @param[out] library  a new object that the caller deletes; written only on success
    /// @param unload        whether the object's destruction unloads the library
    /// @return PERR_OK
    /// @return PERR_LIBRARY_LOAD  the loader refused; the reason is written to standard error
    /// @return PERR_NO_MEMORY     no memory for the object; the library stays loaded
    ///
    /// Blocks: while the library is read and its start-up code runs. Not a cancellation point.
    ///
    /// @warning Loading runs the library's own start-up code; load only what is trusted.
    /// @warning Under a multibyte locale a name with other than ASCII characters may so name
    ///          another library; keep to ASCII names.
    [[nodiscard]] static int load(PLiteral const& name, PLibrary*& library, bool unload);

    /// Looks a symbol up in the library and what it depends on.
    ///
    /// @param symbol  the name as it stands in the object file
    /// @return its address, valid while the library stays loaded; null when there is no such
    ///         symbol, when its value or `symbol` is null, or when the object holds no library
    void* getFunction(char const* symbol);

    /// The name given to `load`, unchanged; the object's own.
    PString const& getName() const;

    /// Turns a bare name into a file name: "lib" is put in front and ".so" behind unless they stand
    /// there already, upper or lower case. "foo" becomes "libfoo.so".
    ///
    /// @warning Folders and versions are not recognised: "libfoo.so.1" becomes "libfoo.so.1.so",
    ///          and "/opt/foo" becomes "lib/opt/foo.so". Use it on bare names only.
    static void fixLibName(PString& name);

private:
    PString name;          ///< as given to `load`
    bool unloadOnDestroy;  ///< true unless `load` was told otherwise
    void* handle;          ///< the loader's; null when none
};

#endif
