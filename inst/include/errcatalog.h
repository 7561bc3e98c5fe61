// errcatalog.h: message catalogs, which give error numbers their texts in the user's language.
//
// A text is looked for in the catalog of the module, then in that of the process, and is otherwise the one that
// the caller brought along (errorapi.h). Only numbers with a catalog text (ErrorHasCatalogText) are looked up.
//
//     the module's    "allcat.%L.cat" in the folder "lib" of the install directory, opened when a text is first
//                     wanted. Each image that links the interface side has its own.
//     the process's   what ErrSetCat has opened, and the system's texts of its own errors. Each locale (localei.h)
//                     has its own, so a program sets its locale first.
//
// "%L" stands for the user's language: where the locale's region is English (eng, en) and the United States (us),
// allcat.eng-us.cat, allcat.en-us.cat, allcat.eng.cat, allcat.en.cat and allcat.cat are tried in this order.
// catalogformat.h says what a file holds; one that is missing, cut short or something else is an empty catalog.
// A file is read when it is opened, up to a size of 64 MiB; from a larger one each text is read when it is wanted.
//
// Thread safety: any thread, also while catalogs are replaced. A program chooses its locale (setlocale) before it
// starts threads that report: the C library does not lock the name of the locale.
// Ownership:     the catalogs belong to the library.
#ifndef TVXCMN_ERRCATALOG_H
#define TVXCMN_ERRCATALOG_H

#include "errbuf.h"
#include "errornumbers.h"
#include "stringc.h"

class ErrCatalogI {
public:
    // The text of a number and its severity; empty, and an error, when there is none. `def_str` is the text that
    // the caller would have instead, with marks or variants of its own; null and "" are none. `style` is null.
    virtual StringC getMessage(ErrSevT& sev, ErrorT err, const char* def_str, const char* style) = 0;
    // What letters behind a capital in a severity mark are for. Kept, but such letters never count.
    virtual void setUserLevel(StringC p_userLevel) = 0;
    virtual ~ErrCatalogI() = default;
};

// What looks texts up in all catalogs, one after the other. Never null. Opens the module's catalog if that has not
// been done. While the install directory is not known, "allcat.%L.cat" is looked for in the current directory
// instead; if it is not there, the install directory is asked for again, once a second at most. A call that comes
// while the same thread is opening the catalog, or from where the registry cannot be asked (the registry itself, a
// consumer of the tracer), goes without it.
ErrCatalogI* ErrGetCat();

// Opens the process's catalog of that name, in the locale that the process has now; null and "" close it. 0, also
// when there is no such file.
ErrorT ErrSetCat(const char* cat_name);

// Goes without a module's catalog from now on. 0.
ErrorT ErrDisableModuleCat();

// Does nothing, and returns 0: modules that call it are still around.
ErrorT ErrSetModuleCat(const char* cat_name);

// The folder of the product's libraries and catalogs, with a slash at its end: "lib" in the registry's value
// "InstallDir" of the key "SOFTWARE\Corvantage Corp\Corvantage" below HKEY_LOCAL_MACHINE. Empty while no INI file
// with that value is registered.
StringC GetRegInstallPath();

#endif   // TVXCMN_ERRCATALOG_H
