// tvxssl-info: which cryptographic module a program of the agent gets here, or why it gets none.
//
// Exit status: 0 there is a usable one; 1 there is none; 2 wrong use; 4 the answer cannot be written.

#include "../support/commandline.h"
#include "../support/jsontext.h"

#include "errbuf.h"
#include "opensslproxy.h"
#include "traceconsumer.h"
#include "tracecontroller.h"
#include "tvxcmn.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <vector>

namespace {

const char USAGE[] = "usage: tvxssl-info [--json] [FOLDER]\n"
                     "       tvxssl-info --help | --version\n";
const char HELP[] =
    "\n"
    "Loads the cryptographic module, libtvxssl.so, as the agent's programs do, and prints its file and its\n"
    "version of OpenSSL, or why there is none that can be used. It is looked for in FOLDER, if that is given,\n"
    "and then beside libtvxcmn.so and where the loader looks for every library.\n"
    "\n"
    "Exit status: 0 usable, 1 a stand-in that does nothing is in use, 2 wrong use,\n"
    "4 the answer cannot be written.\n";

const ToolT TOOL = {"tvxssl-info", USAGE, HELP};

enum StatusT { STATUS_USABLE = 0, STATUS_STAND_IN = 1 };

// Keeps the lines in which the search is traced.
class SearchLinesC final : public TraceConsumerI {
public:
    SearchLinesC()
    {
        m_controller.registerConsumer(this, 0, 0);
        m_controller.enable(this, "Encoding/Encryption/OpenSSL/Proxy");
    }
    ~SearchLinesC() { m_controller.unregisterConsumer(this); }
    SearchLinesC(const SearchLinesC&) = delete;
    SearchLinesC& operator=(const SearchLinesC&) = delete;

    long message(const char* /*traceClass*/, int /*indent*/, const char* format, ArgListC args) override
    {
        lines.emplace_back(StringC::format(StringC(format), args).utf8());
        return 0;
    }
    long valueChange(const char* /*traceClass*/, int /*indent*/) override { return 0; }
    long newClass(const char* /*traceClass*/) override { return 0; }

    std::vector<std::string> lines;

private:
    TraceControllerI& m_controller = *getTraceController(2);
};

struct ModuleT {
    unsigned long version = 0;   // 0: there is none
    std::string text;
    std::string path;
    std::vector<std::string> steps;
    std::vector<std::string> errors;
};

// The file that an object's virtual functions come from.
std::string fileOf(const OpenSSLProxyI* proxy)
{
    const void* functions = nullptr;
    std::memcpy(&functions, static_cast<const void*>(proxy), sizeof functions);
    Dl_info info;
    return dladdr(functions, &info) != 0 ? info.dli_fname : "";
}

ModuleT search(const char* folder)
{
    ModuleT module;
    const SearchLinesC search;
    OpenSSLI* const openSSL = getOpenSSL(1);
    openSSL->SetLibraryPath(folder);
    OpenSSLProxyI* const proxy = openSSL->getProxy();
    module.steps = search.lines;
    const ErrBufI& errors = *getErrBuf(2);
    for (unsigned long i = 0; i < errors.count(); ++i) module.errors.emplace_back(errors.get(i)->message().utf8());

    module.version = (proxy->SSLeay)();
    if (module.version == 0) return module;
    const char* const text = (proxy->SSLeay_version)(0);
    module.text = text != nullptr ? text : "";
    module.path = fileOf(proxy);
    return module;
}

std::string listOf(const std::vector<std::string>& texts)
{
    std::string array;
    for (const std::string& text : texts) array += (array.empty() ? "\n  " : ",\n  ") + jsonOf(text);
    return "[" + array + "]";
}

void printJson(const ModuleT& module)
{
    std::printf("{\"usable\": %s, \"module\": %s, \"version\": \"%#lx\", \"text\": %s,\n \"steps\": %s,\n"
                " \"errors\": %s}\n",
                module.version != 0 ? "true" : "false", jsonOf(module.path).c_str(), module.version,
                jsonOf(module.text).c_str(), listOf(module.steps).c_str(), listOf(module.errors).c_str());
}

void printText(const ModuleT& module)
{
    if (module.version != 0) {
        std::printf("%s\n%s, version %#lx\n", module.path.c_str(), module.text.c_str(), module.version);
    } else {
        std::puts("no usable module");
    }
    for (const std::string& step : module.steps) std::printf("  %s\n", step.c_str());
    for (const std::string& error : module.errors) std::printf("  %s\n", error.c_str());
}

int run(const CommandLineT& line)
{
    if (line.words.size() > 1) return wrongUse(TOOL);
    const ModuleT module = search(line.words.empty() ? nullptr : line.words[0].c_str());
    if (line.isJson) {
        printJson(module);
    } else {
        printText(module);
    }
    return module.version != 0 ? STATUS_USABLE : STATUS_STAND_IN;
}

}   // namespace

int main(int argc, char** argv) { return runTool(TOOL, argc, argv, {}, {}, run); }
