#include "error/api/catswitch.h"

#include "cmnlib/neverdestroyed.h"
#include "error/api/catalogcell.h"
#include "error/api/installpath.h"
#include "error/api/messagetext.h"
#include "localei.h"
#include "tracesite.h"
#include "tvxcmn.h"

#include <climits>
#include <clocale>
#include <cstring>
#include <ctime>

namespace {

const char MODULE_CATALOG[] = "allcat.%L.cat";
const long SETTLED = LONG_MAX;
const long ASK_AGAIN_MS = 1000;

constinit NeverDestroyedM<ErrCatSwitchC> theSwitch;

// ---- the module's catalog ------------------------------------------------------------------------------

constinit ErrCatalogCellC moduleCatalog;
constinit std::atomic<bool> isModuleOver{false};   // nobody opens the module's catalog any more
constinit std::atomic<long> askAt{0};              // when to look for it (again), see now()

// Milliseconds of a clock that is cheap to read.
long now()
{
    timespec time;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return time.tv_sec * 1000 + time.tv_nsec / 1000000;
}

// A flag of the calling thread, up for the length of a scope.
class RaisedC {
public:
    explicit RaisedC(bool& flag) : m_flag(flag) { m_flag = true; }
    ~RaisedC() { m_flag = false; }
    RaisedC(const RaisedC&) = delete;
    RaisedC& operator=(const RaisedC&) = delete;

private:
    bool& m_flag;
};

// The way to the install directory leads through the registry, which may report errors: those go without the
// catalog that they would otherwise wait for, and so do those out of the middle of the registry and of consumers of the
// tracer, who cannot ask it. As long as there is no catalog at all every other thread looks for one, so that no message
// goes without; later one thread asks for all of them.
void openModuleCatalog(long due)
{
    static thread_local bool isOpening = false;
    if (isOpening) return;
    const RaisedC opening(isOpening);
    const ErrCatalogC* const before = moduleCatalog.current();
    if (isModuleOver) return;   // asked behind `before`, which may be what was put there for good
    if (before != nullptr && !askAt.compare_exchange_strong(due, now() + ASK_AGAIN_MS)) return;

    StringC folder;
    if (!findInstallPath(folder) || (before != nullptr && folder.isEmpty())) return;
    auto opened = std::make_unique<ErrCatalogC>(folder + StringC(MODULE_CATALOG));
    const bool isSettled = !folder.isEmpty() || opened->isOpen();
    const ErrCatalogC* const mine = opened.get();
    if (!moduleCatalog.replaceIf(before, std::move(opened))) return;
    askAt = isSettled ? SETTLED : now() + ASK_AGAIN_MS;
    if (isModuleOver) moduleCatalog.replaceIf(mine, nullptr);   // it was dropped meanwhile, and nobody drops it again
}

// The image is about to be unloaded, or the process is at its very end.
__attribute__((destructor)) void dropModuleCatalog()
{
    isModuleOver = true;
    moduleCatalog.replace(nullptr);
}

// ---- the process's catalog -----------------------------------------------------------------------------

// A locale that has been current, so that a message costs no look-up of the locale. Written once.
struct KnownLocaleT {
    std::atomic<bool> isTaken;
    std::atomic<LocaleLanguageI*> language;   // null until `name` is complete
    char name[504] = {};
};

constinit KnownLocaleT knownLocales[4];

void rememberLocale(const char* name, LocaleLanguageI* language)
{
    const size_t size = std::strlen(name) + 1;
    if (size > sizeof KnownLocaleT::name) return;
    for (KnownLocaleT& known : knownLocales) {
        if (!known.isTaken.exchange(true)) {
            std::memcpy(known.name, name, size);
            known.language = language;
            return;
        }
        if (known.language == nullptr || std::strcmp(known.name, name) == 0) return;   // another thread is at it
    }
}

LocaleLanguageI& currentLanguage()
{
    const char* const name = std::setlocale(LC_ALL, nullptr);
    for (const KnownLocaleT& known : knownLocales) {
        LocaleLanguageI* const language = known.language.load(std::memory_order_acquire);
        if (language != nullptr && std::strcmp(known.name, name) == 0) return *language;
    }
    LocaleIdT lcid;
    LocaleLanguageI* const language = getLocale(lcid)->language(1);
    rememberLocale(lcid.utf8(), language);
    return *language;
}

// ---- tracing -------------------------------------------------------------------------------------------

constinit TraceSiteC openSite("0Error/Catalog/Open");
constinit TraceSiteC fetchSite("Error/Catalog/Fetch");

// A consumer of the tracer that reports gets no message about the text of its report, or there would be no end.
void traceFetch(const char* format, ErrorT err, const StringC& text)
{
    static thread_local bool isTracing = false;
    if (!fetchSite.isEnabled() || isTracing) return;
    const RaisedC tracing(isTracing);
    fetchSite.trace(format, static_cast<int>(ErrorSetOf(err)), static_cast<int>(ErrorMessageOf(err)), text);
}

// An empty text counts as none.
bool findInModule(ErrorT err, StringC& text, ErrSevT& sev)
{
    if (!moduleCatalog.message(err, text, sev) || text.isEmpty()) return false;
    traceFetch("Message s%dm%d from module catalog: %S", err, text);
    return true;
}

bool findInProcess(ErrorT err, const char* style, StringC& text, ErrSevT& sev)
{
    ErrCatalogI* const catalog = currentLanguage().catalog();
    if (catalog == nullptr) return false;
    catalog->getMessage(sev, err, "", style).swap(text);
    if (text.isEmpty()) return false;
    traceFetch("Message s%dm%d from process catalog: %S", err, text);
    return true;
}

}   // namespace

// ---- the switch ----------------------------------------------------------------------------------------

// An answer that is empty may have left a severity behind, which is not that of the default text.
StringC ErrCatSwitchC::getMessage(ErrSevT& sev, ErrorT err, const char* def_str, const char* style)
{
    if (ErrorHasCatalogText(err)) {
        StringC text;
        if (findInModule(err, text, sev) || findInProcess(err, style, text, sev)) return text;
    }
    return defaultMessage(def_str, sev);
}

void ErrCatSwitchC::setUserLevel(StringC p_userLevel)
{
    moduleCatalog.setUserLevel(p_userLevel);
    ErrCatalogI* const catalog = currentLanguage().catalog();
    if (catalog != nullptr) catalog->setUserLevel(p_userLevel);
}

ErrCatalogI* ErrGetCat()
{
    const long due = askAt.load(std::memory_order_acquire);
    if (due != SETTLED && now() >= due) openModuleCatalog(due);
    return &*theSwitch;
}

ErrorT ErrSetCat(const char* cat_name)
{
    if (cat_name == nullptr) cat_name = "";
    if (openSite.isEnabled()) openSite.trace("Setting process message catalog to %s", cat_name);
    return currentLanguage().catalog(StringC(cat_name));
}

ErrorT ErrDisableModuleCat()
{
    const bool hadOne = moduleCatalog.current() != nullptr;
    if (!isModuleOver.exchange(true)) moduleCatalog.replace(std::make_unique<ErrCatalogC>(StringC()));
    askAt = SETTLED;
    if (hadOne && openSite.isEnabled()) openSite.trace("Replaced previous catalog with empty one");
    return 0;
}

ErrorT ErrSetModuleCat(const char*) { return 0; }
