#include "prefs.h"

#include "assertfatal.h"
#include "cmnlib/neverdestroyed.h"
#include "threadptr.h"

#include <cstring>

namespace {

// The calling thread's arrays; null when there is nowhere to keep them.
PrefsStaticDataC* staticData()
{
    static NeverDestroyedM<ThreadSpecificPointerM<PrefsStaticDataC>> data;
    if (data->obj() == nullptr) {
        auto created = std::make_unique<PrefsStaticDataC>();
        *data = created.get();
        if (data->obj() == created.get()) return created.release();
    }
    (void)TVX_CHECK(data->obj() != nullptr, "gk_data_p");
    return data->obj();
}

template <class T>
void ensureRoom(std::unique_ptr<T[]>& array, size_t& room, size_t needed)
{
    if (room >= needed) return;
    array.reset(new T[needed]);
    room = needed;
}

// Copies `text` to `to` and moves `to` behind it.
const char* copyText(const char* text, char*& to)
{
    const size_t size = std::strlen(text) + 1;
    char* const copy = to;
    std::memcpy(copy, text, size);
    to += size;
    return copy;
}

// Calls `body` with each key that is not removed.
template <class BodyT>
void forEachKey(const PrefsKeyElem* first, BodyT body)
{
    for (const PrefsKeyElem* key = first; key != nullptr; key = key->ke_next_p) {
        if (key->ke_dirty != KEY_REMOVE) body(key);
    }
}

}   // namespace

const char** PrefsC::GetKeys(const char* section) const
{
    const PrefsSectionElem* const found = FindSection(section);
    PrefsStaticDataC* const data = found != nullptr ? staticData() : nullptr;
    if (data == nullptr) return nullptr;
    const PrefsKeyElem* const first = found->ps_sec_p != nullptr ? found->ps_sec_p->keylist_p : nullptr;

    size_t keys = 0;
    size_t size = 0;
    forEachKey(first, [&](const PrefsKeyElem* key) {
        ++keys;
        size += std::strlen(key->ke_name_p) + 1;
    });
    ensureRoom(data->gk_keys_pp, data->gk_nkeys, keys + 1);
    ensureRoom(data->gk_data_p, data->gk_data_sz, size);
    const char** out = data->gk_keys_pp.get();
    char* text = data->gk_data_p.get();
    forEachKey(first, [&](const PrefsKeyElem* key) { *out++ = copyText(key->ke_name_p, text); });
    *out = nullptr;
    return data->gk_keys_pp.get();
}

const char** PrefsC::GetSectNames() const
{
    PrefsStaticDataC* const data = staticData();
    if (data == nullptr) return nullptr;
    const auto isListed = [](const PrefsSectionElem* section) {
        return section->ps_dirty != SEC_REMOVE && section->ps_name_p != nullptr;
    };
    size_t names = 0;
    size_t size = 0;
    for (const PrefsSectionElem* section = sectlist_p; section != nullptr; section = section->ps_next_p) {
        if (!isListed(section)) continue;
        ++names;
        size += std::strlen(section->ps_name_p) + 1;
    }
    data->gsn_list_p.reset(new const char*[names + 1]);
    data->gsn_text_p.reset(new char[size]);
    const char** out = data->gsn_list_p.get();
    char* text = data->gsn_text_p.get();
    for (const PrefsSectionElem* section = sectlist_p; section != nullptr; section = section->ps_next_p) {
        if (isListed(section)) *out++ = copyText(section->ps_name_p, text);
    }
    *out = nullptr;
    return data->gsn_list_p.get();
}

PrefsKeyElem** PrefsC::GetKeyElems(const char* section) const
{
    const PrefsSectionElem* const found = FindSection(section);
    PrefsStaticDataC* const data = found != nullptr ? staticData() : nullptr;
    if (data == nullptr) return nullptr;
    PrefsKeyElem* const first = found->ps_sec_p != nullptr ? found->ps_sec_p->keylist_p : nullptr;

    size_t keys = 0;
    forEachKey(first, [&](const PrefsKeyElem*) { ++keys; });
    ensureRoom(data->gke_key_elems_pp, data->gke_nkeys, keys + 1);
    PrefsKeyElem** out = data->gke_key_elems_pp.get();
    for (PrefsKeyElem* key = first; key != nullptr; key = key->ke_next_p) {
        if (key->ke_dirty != KEY_REMOVE) *out++ = key;
    }
    *out = nullptr;
    return data->gke_key_elems_pp.get();
}
