// module.h: what the module gives the program, by interface pointers only.
#ifndef CONSUMER_MODULE_H
#define CONSUMER_MODULE_H

#include <stringimpl.h>

struct ConsumerModuleT {
    // The factory that the module's image sees.
    StringImplFactoryI* factory;
    // A new text "<text>, <number of its characters>"; the caller releases it once.
    StringImplI* (*describe)(StringImplI* text);
};

#endif   // CONSUMER_MODULE_H
