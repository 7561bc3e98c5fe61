// filename.h: the value in which the library holds a path.
//
// A name keeps its path normalised: runs of "/" are one, none stands at the front or the end, and a flag
// tells whether the path began with one. The root is the empty absolute path, the empty relative path is
// no file at all. Everything here looks at the text alone and never at the file system; "." and ".." are
// components like any other until a canonical path is asked for.
//
// A path is bytes, as it is for the system: names that are not UTF-8 come and go unchanged, and where
// characters are counted (the "?" of a pattern) a byte that belongs to none counts as one. A text that
// holds U+0000 is kept, but no operation of the system takes it.
//
// Thread safety: as for any value: one name is unlocked, different names from any threads.
// Ownership:     what is returned as a pointer is new and the caller deletes it.
#ifndef TVXCMN_FILENAME_H
#define TVXCMN_FILENAME_H

#include "stringc.h"

class StringArrayC;

class FileNameC {
public:
    FileNameC() = default;
    FileNameC(const StringC& name);
    // `name` below `base`. "a" and "b" give "a/b", "." adds nothing in front, and an absolute `name` stays
    // absolute only behind an empty base. A `base` without "/" at its end takes a leading "/" of `name`
    // for the missing one and drops it: "a" and "/b" give "ab".
    FileNameC(const StringC& base, const StringC& name);
    // Requires: a parent ("parent != __null"). Otherwise: `name` alone.
    FileNameC(const FileNameC* parent, StringC name);
    // A copy; of null, the empty name.
    FileNameC(const FileNameC* other);
    FileNameC(const FileNameC& other) = default;
    // The parts joined by "/".
    FileNameC(StringArrayC& parts);
    virtual ~FileNameC();

    FileNameC& operator=(const FileNameC& other) = default;

    // The path with the "/" of an absolute name, and without it.
    StringC getPath() const { return makePath(path); }
    StringC Path() const { return path; }
    bool isAbsolute() const noexcept { return is_absolute; }
    bool isRoot() const { return is_absolute && path.isEmpty(); }
    // False for the root and for the empty name.
    bool isValid() const;
    // Drive letters and network names exist on other systems only: 0 and false.
    char Drive() const noexcept { return drive; }
    bool isUNC() const noexcept { return is_UNC; }

    // Components are counted from 0; the root has none.
    long numComponents() const;
    // Requires: a path that is not empty ("!path.isEmpty()") and an index in it ("num == -1").
    // Otherwise: empty.
    StringC getComponent(long num) const;
    // `num` components from `first` on; all that are left when `num` is negative or too large.
    // Requires: first < numComponents() ("first < pathComponents"; otherwise the last one), first >= 0
    // ("first >= 0"; otherwise 0), num other than 0 ("num != 0"; otherwise null).
    [[nodiscard]] StringArrayC* getComponents(long first, long num) const;

    // The last component after `suffix` was taken off the path: "d/a.txt" without ".txt" is "a", but
    // "d/.txt" without it is empty.
    StringC getBase(const StringC& suffix) const;
    // Whether the last component matches `pattern`, see wildcardMatch; case counts.
    bool matchBase(StringC pattern) const;
    // What follows the last `sep` of the whole path, directories included; empty when there is none.
    StringC getExtension(unsigned int sep) const;
    // `oldSuffix`, if the path ends with it, replaced by `newSuffix`.
    FileNameC withSuffix(const StringC& newSuffix, const StringC& oldSuffix) const;

    // The path before the last "/". Going up ends at "/" or at the empty name, whose parents they are
    // themselves.
    StringC getParentPath() const;
    FileNameC getParent() const;

    // Without "." and with each ".." taken together with the component before it. What cannot be taken
    // away stays, also behind the root: "../a", "/../a". Nothing left over gives "" or, when a component
    // was taken away, ".". As a path (not as a name) a single letter keeps a "/" behind it: "a/b/.." is
    // "a/" while "ab/c/.." is "ab".
    StringC getCanonicalPath() const;
    FileNameC getCanonical() const;

    // Whether the components of `base` are the first ones of this name, and both are absolute or both
    // relative. Requires: a base ("base != __null"). Otherwise: false.
    bool isBaseDir(const FileNameC* base) const;
    // This name as seen from `base`: "." for the base itself, and an unchanged copy for what does not lie
    // below it; nothing is taken to lie below the root. Requires: a base ("base != __null"; otherwise null),
    // both absolute or both relative ("base->isAbsolute() == is_absolute"; otherwise the bare paths decide).
    [[nodiscard]] FileNameC* makeRelativeTo(const FileNameC* base) const;

    // Below 0, 0 or above 0: the paths by code point. Requires: a name ("other != __null"). Otherwise: 0.
    int compareTo(const FileNameC* other) const;

    // Whether the whole of `name` matches: "*" stands for any text, "?" for one character, anything else
    // for itself, or for the same letter in another case when `caseSensitive` is 0.
    static bool wildcardMatch(StringC name, StringC pattern, unsigned char caseSensitive);
    // Takes `suffix` off the end of `s`, if it stands there.
    static void StripSuffix(StringC& s, const StringC& suffix);

protected:
    // Normalises `path`. Sets is_absolute for a leading "/", but never clears it.
    void ProcessName();
    void ComposeName(const StringC& base, StringC name);
    // `text` with a "/" in front, if this name is absolute.
    StringC makePath(const StringC& text) const;

private:
    friend class FileNameMakerC;   // file/namemaker.h: names out of bytes, without a text in between

    StringC path;   // begins and ends with no "/", and holds no two in a row
    char drive = 0;
    bool is_absolute = false;
    bool is_UNC = false;
};

#endif   // TVXCMN_FILENAME_H
