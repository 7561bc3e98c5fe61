// cataloglint.h: finds what is wrong in the sources of a catalog.
#ifndef TVXCAT_CATALOGLINT_H
#define TVXCAT_CATALOGLINT_H

#include "catalogsource.h"

// What makes it impossible to build one catalog of these sources: their errors, numbers and names that stand there
// twice, texts that are too long.
std::vector<FindingT> buildFaults(const std::vector<CatalogSourceC>& sources);

// What makes it impossible to write a header of a source that can be built: numbers that no program can ask for, and
// names that are the same.
std::vector<FindingT> headerFaults(const CatalogSourceC& source);

// What else is wrong: numbers out of order or that no program can ask for, unknown letters in severity marks, texts
// that are not UTF-8 or have a zero byte, and directives that want other arguments than those of the reference (null
// if there is none).
std::vector<FindingT> lintFaults(const std::vector<CatalogSourceC>& sources, const CatalogSourceC* reference);

#endif   // TVXCAT_CATALOGLINT_H
