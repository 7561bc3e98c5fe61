// dirstack.h: the directories that a walk through a tree has open, the innermost last.
//
// Everything but the first directory is opened relative to the one around it, so that neither the length
// of a path limits the depth of a walk nor somebody who puts a link in place of a directory leads it
// elsewhere. At most MAX_OPEN directories hold a descriptor, or fewer when the process has no more: of those
// further out, what had not been read is kept in memory, and they are opened again, as the ".." of the directory
// inside, when it is their turn. Only one that was left through a link, which has no such way back, stays open.
//
// Thread safety: unlocked.
#ifndef TVXCMN_DIRSTACK_H
#define TVXCMN_DIRSTACK_H

#include "blobarr.h"

#include <dirent.h>
#include <string_view>
#include <sys/types.h>

class FileNameC;
struct DirRestC;

struct DirStackEntC {
    FileNameC* dirname;   // owned
    DIR* dp;              // owned; null while only `rest` is left of it, or when it cannot be found again
    DirRestC* rest;       // owned: what was read ahead; null while nothing was
    int failure;          // why the directory cannot be read to its end: an errno
    bool isSearchable;    // its entries can be looked at
    dev_t device;         // with the inode what the directory is; both 0 until that is asked for
    ino_t inode;
};

class DIRStackC : public BlobArrayC {
public:
    static const size_t MAX_OPEN = 64;

    DIRStackC() : BlobArrayC(sizeof(DirStackEntC)) {}
    ~DIRStackC() override { destroyAll(); }

    // Takes both over. The stream gets a place among the open ones, for which another one may lose its own.
    void push(FileNameC* dirname, DIR* dp);
    // Takes the innermost directory off the stack, for the caller to close. Requires: one ("n < used").
    DirStackEntC pop();
    // The innermost directory; null when there is none. Good until the next push.
    DirStackEntC* top() const { return isEmpty() ? nullptr : entry(size() - 1); }
    // Closes the innermost directory and forgets it.
    void explode();
    void destroy(void* element) override;
    void destroyAll();
    bool isEmpty() const { return size() == 0; }

    // Opens `path`, or, on a stack that is not empty, its last component in the innermost directory. A link
    // is followed only with `followsLinks`, and then a directory inside of itself is ELOOP. Takes over
    // `dirname`. 0 and the directory on the stack, or an errno.
    int open(FileNameC* dirname, const FileNameC& path, bool followsLinks);

    enum NextT { ENTRY, END, FAILED };
    // The next entry of the innermost directory but "."; `type` is its DT_... `name` is good until the next
    // call. FAILED: as the entry's `failure` says.
    NextT next(std::string_view& name, unsigned char& type);

private:
    DirStackEntC* entry(size_t n) const { return static_cast<DirStackEntC*>((*this)[n]); }
    bool holds(dev_t device, ino_t inode) const;
    void shelveOutermost();
    void unshelve(DirStackEntC& directory, DIR* inside);

    size_t m_shelved = 0;   // directories at the outer end whose turn is later
};

#endif   // TVXCMN_DIRSTACK_H
