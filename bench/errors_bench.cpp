// Group "errors": what a failure costs that is reported with a message.
//
// The workloads do what a caller does with a failure: pass it on and read it where it is shown, or recover
// from it. An absl::Status or a GError is handed from function to function, so it is copied once on the way; ours
// stays in the thread's buffer and only its number travels.

#include "errorapi.h"
#include "tvxcmn.h"

#include "support/bench.h"

#include <absl/status/status.h>
#include <absl/strings/str_format.h>
#include <glib.h>
#include <memory>
#include <pthread.h>
#include <string>

namespace {

const ErrorT NOT_SAVED = 0xE1B20005L;

// The values of the messages. Nothing about them is known when the code is compiled: see keep().
struct ValuesT {
    const char* path = "/opt/vendor/agent/inventory.ini";
    const char* host = "server-17.example.net";
    int line = 87;
};
ValuesT v;

#define MESSAGE "%s: line %d of %s cannot be saved"
#define CONSTANT_MESSAGE "The settings cannot be saved on this machine"

typedef std::unique_ptr<GError, void (*)(GError*)> GErrorT;

GErrorT gError(GError* error) { return {error, g_error_free}; }
absl::Status absent(const std::string& text) { return absl::Status(absl::StatusCode::kNotFound, text); }

template <class OpT>
void row(const std::string& workload, const std::string& library, OpT op)
{
    addVerifiedRow(workload, library, items(1), [=](bool whole) {
        keep(v);
        return op([whole](std::string_view text) { return whole ? digestOf(text) : DigestT{text.size()}; });
    });
}

// Reported, passed on and shown.
template <class ReportT, class StatusT, class GErrorMakerT>
void shownRows(const std::string& workload, ReportT report, StatusT status, GErrorMakerT error)
{
    row(workload, "ours", [=](auto shown) {
        ErrorT err = report();
        keep(err);
        ErrSevT worst;
        const StringC text = getErrBuf(2)->coalesce(worst);
        return shown(std::string_view(text.utf8(), text.utf8Bytes()));
    });
    row(workload, "Abseil", [=](auto shown) {
        const absl::Status made = status();
        const absl::Status copy = made;   // NOLINT(performance-unnecessary-copy-initialization): what is measured
        keep(copy);
        return shown(std::string_view(copy.message().data(), copy.message().size()));
    });
    row(workload, "GLib", [=](auto shown) {
        const GErrorT made = error();
        const GErrorT copy = gError(g_error_copy(made.get()));
        keep(copy);
        return shown(std::string_view(copy->message));
    });
}

void formattedRows()
{
    shownRows(
        "formatted", [] { return Error(NOT_SAVED, MESSAGE, ArgList << v.path << v.line << v.host); },
        [] { return absent(absl::StrFormat(MESSAGE, v.path, v.line, v.host)); },
        [] { return gError(g_error_new(G_FILE_ERROR, 1, MESSAGE, v.path, v.line, v.host)); });
}

void constantRows()
{
    shownRows(
        "constant", [] { return Error(NOT_SAVED, CONSTANT_MESSAGE); },
        [] { return absl::Status(absl::StatusCode::kNotFound, CONSTANT_MESSAGE); },
        [] { return gError(g_error_new_literal(G_FILE_ERROR, 1, CONSTANT_MESSAGE)); });
}

// Reported, and taken back by a caller that recovers.
void recoveredRows()
{
    const std::string w = "recovered";
    const auto nothing = [](auto shown) { return shown(std::string_view()); };
    row(w, "ours", [=](auto shown) {
        const AutoRollbackErrorCheckpointC scope;
        ErrorT err = Error(NOT_SAVED, MESSAGE, ArgList << v.path << v.line << v.host);
        keep(err);
        return nothing(shown);
    });
    row(w, "Abseil", [=](auto shown) {
        const absl::Status made = absent(absl::StrFormat(MESSAGE, v.path, v.line, v.host));
        keep(made);
        return nothing(shown);
    });
    row(w, "GLib", [=](auto shown) {
        const GErrorT made = gError(g_error_new(G_FILE_ERROR, 1, MESSAGE, v.path, v.line, v.host));
        keep(made);
        return nothing(shown);
    });
}

// What belongs to the calling thread, found again.
void threadRows()
{
    const std::string w = "of_the_thread";
    addRow(w, "ours", items(1), [] {
        ErrBufI* buffer = getErrBuf(2);
        keep(buffer);
        return DigestT{1};
    });
    static int object;
    static GPrivate glibKey = G_PRIVATE_INIT(nullptr);
    g_private_set(&glibKey, &object);
    addRow(w, "GLib", items(1), [] {
        gpointer found = g_private_get(&glibKey);
        keep(found);
        return DigestT{1};
    });
    static pthread_key_t key;
    pthread_key_create(&key, nullptr);
    pthread_setspecific(key, &object);
    addRow(w, "libc", items(1), [] {
        void* found = pthread_getspecific(key);
        keep(found);
        return DigestT{1};
    });
}

}   // namespace

void registerRows()
{
    formattedRows();
    constantRows();
    recoveredRows();
    threadRows();
}
