// explain.h: what a trace profile does to a class, as the library itself finds it.
#ifndef TVXTRACE_EXPLAIN_H
#define TVXTRACE_EXPLAIN_H

#include <string>
#include <vector>

// A class on the way from the root to the one that was asked for.
struct ChainLinkT {
    std::string name;
    int increment;
    const char* set;   // by the profile: "on", "off" or "inherits"
    int left;          // of the detail, below this class; negative: nobody above has been set
    bool isOn;
};

struct ExplanationT {
    int maxDetail;
    std::vector<ChainLinkT> chain;   // the last one is the class
};

// Loads the profile into this process's tracer, so it can be asked for once.
ExplanationT explainClass(const std::string& profile, const std::string& traceClass);

#endif   // TVXTRACE_EXPLAIN_H
