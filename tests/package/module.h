// module.h: what the module gives the program, by interface pointers only.
#ifndef CONSUMER_MODULE_H
#define CONSUMER_MODULE_H

#include <errornumbers.h>
#include <stringimpl.h>

constexpr ErrorT DESCRIBED = 0xE1F40001L;

struct ConsumerModuleT {
    // The factory that the module's image sees.
    StringImplFactoryI* factory;
    // A new text "<text>, <number of its characters>"; the caller releases it once. Reports DESCRIBED.
    StringImplI* (*describe)(StringImplI* text);
};

#endif   // CONSUMER_MODULE_H
