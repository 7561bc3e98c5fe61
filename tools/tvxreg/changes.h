// changes.h: changes of the registry that reach the disk together, or not at all.
#ifndef TVXREG_CHANGES_H
#define TVXREG_CHANGES_H

#include "mounts.h"
#include "status.h"

#include <string>
#include <vector>

struct ChangeT {
    enum KindT { SET, DELETE_VALUE, ADD_KEY, DELETE_KEY, DELETE_TREE };
    KindT kind;
    std::string key;
    std::string name;    // of a value
    std::string value;   // SET
    std::string from;    // what messages call it
};

// Makes all changes, in their order. Each file is saved once, with all of its changes. When one of them cannot be
// made nothing is changed at all; when a file cannot be saved that one and those behind it stay as they were.
// A file that another process keeps locked is waited for so many seconds; when yet another one locks it between that
// and the save, for as long as the registry waits.
int applyChanges(const MountsC& mounts, const std::vector<ChangeT>& changes, double patience);

// The changes that make the keys and values of an INI file whose sections are keys.
int readImport(const std::string& path, std::vector<ChangeT>& changes);

// The words of one line. Blanks part them; quotes of either kind hold them together, and nothing in between means
// anything else. The result is false when a quote is not closed.
bool splitWords(const std::string& line, std::vector<std::string>& words);

#endif   // TVXREG_CHANGES_H
