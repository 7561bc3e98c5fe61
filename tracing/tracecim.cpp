#include "tracing/tracecim.h"

#include "cmnlib/errnokeeper.h"
#include "errornumbers.h"
#include "gettime.h"
#include "taskid.h"
#include "traceconsumer.h"
#include "tracing/tracedelivery.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>
#include <utility>

namespace {

const int MAX_DETAIL = 9;
const long INVALID = ErrorOfErrno(EINVAL);
const long long MICROSECONDS = 1000000;

int clampedDetail(int detail) { return std::clamp(detail, 0, MAX_DETAIL); }

// Where the name begins behind its detail prefix. The digit is the increment; -1 without one.
const char* withoutPrefix(const char* name, short& increment)
{
    increment = -1;
    if (*name < '0' || *name > '9') return name;
    increment = static_cast<short>(*name - '0');
    return name + (name[1] == ',' ? 2 : 1);
}

long long monotonicMicroseconds()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * MICROSECONDS + now.tv_nsec / 1000;
}

template <class T>
long give(T* result, const T& value)
{
    if (result == nullptr) return INVALID;
    *result = value;
    return 0;
}

}   // namespace

constinit thread_local int TraceDeliveryC::depth = 0;

size_t TraceConsumerArrayC::slotOf(const TraceConsumerI* consumer) const
{
    const auto isIt = [consumer](const TraceConsumerEntryC& entry) { return entry.consumer == consumer; };
    return static_cast<size_t>(std::find_if(begin(), end(), isIt) - begin());
}

TraceDetailsC::TraceDetailsC() noexcept { std::memset(m_left, -1, sizeof m_left); }

void TraceDetailsC::descend(const TraceConsumerArrayC& consumers, const TraceValuesT& values)
{
    const size_t count = std::min(consumers.size(), TRACE_BITS);
    for (size_t i = 0; i < count; ++i) {
        const TraceConsumerEntryC& entry = consumers[i];
        if (entry.consumer == nullptr) continue;
        const int left = (values.specified >> i & 1) != 0 ? entry.detail : m_left[i];
        m_left[i] = static_cast<signed char>(std::max(left - values.detail_incr, -1));
    }
}

TraceEnabledT TraceDetailsC::reach() const noexcept
{
    TraceEnabledT bits = 0;
    for (size_t i = 0; i < TRACE_BITS; ++i) bits |= TraceEnabledT{m_left[i] >= 0} << i;
    return bits;
}

TraceControllerC::~TraceControllerC() { HashTableC::destroyAll(); }

// ---- consumers --------------------------------------------------------------------------------------

long TraceControllerC::registerConsumer(TraceConsumerI* consumer, int, int detail)
{
    if (consumer == nullptr) return TVXERR_TRACE_UNKNOWN_CONSUMER;
    const TraceSectionC section(*this);
    const size_t slot = slotOf(nullptr);
    if (slot == TraceConsumerArrayC::size()) {
        TraceConsumerArrayC::add({consumer, MAX_DETAIL});
    } else {
        TraceConsumerArrayC::put(slot, {consumer, MAX_DETAIL});
        forgetSlot(slot);
    }
    return setDetail(consumer, detail);
}

// Takes the bit of a slot that somebody else had out of all classes.
void TraceControllerC::forgetSlot(size_t slot)
{
    if (slot >= TRACE_BITS) return;
    const TraceEnabledT others = ~(TraceEnabledT{1} << slot);
    long status = 0;
    HashIteratorC classes(this, true);
    while (HashElemI* const elem = classes.next(status)) {
        TraceControlVarC& traceClass = static_cast<TraceControlVarC&>(*elem);
        setRelaxed(traceClass.self, traceClass.self & others);
        setRelaxed(traceClass.specified, traceClass.specified & others);
    }
    for (TraceControlVarC* const root : m_roots) recompute(*root, true);
}

long TraceControllerC::unregisterConsumer(TraceConsumerI* consumer)
{
    const TraceSectionC section(*this);
    const size_t slot = slotOf(consumer);
    if (consumer == nullptr || slot == TraceConsumerArrayC::size()) return TVXERR_TRACE_UNKNOWN_CONSUMER;
    TraceConsumerArrayC::put(slot, {nullptr, 0});
    ++m_changes;
    return 0;
}

long TraceControllerC::setDetail(TraceConsumerI* consumer, int detail)
{
    const TraceSectionC section(*this);
    const size_t slot = slotOf(consumer);
    if (consumer == nullptr || slot == TraceConsumerArrayC::size()) return TVXERR_TRACE_UNKNOWN_CONSUMER;
    TraceConsumerArrayC::put(slot, {consumer, clampedDetail(detail)});
    if (slot >= TRACE_BITS) return 0;

    // This stops at classes that are off. What is set below one of them is done afterwards.
    for (TraceControlVarC* const root : m_roots) recompute(*root);
    long status = 0;
    HashIteratorC classes(this, true);
    while (HashElemI* const elem = classes.next(status)) {
        TraceControlVarC& traceClass = static_cast<TraceControlVarC&>(*elem);
        const TraceControlVarC* const parent = traceClass.parent();
        const bool wasReached = parent == nullptr || (parent->net >> slot & 1) != 0;
        if ((traceClass.specified >> slot & 1) != 0 && !wasReached) recompute(traceClass);
    }
    return 0;
}

bool TraceControllerC::isRegistered(const TraceConsumerI* consumer)
{
    const TraceSectionC section(*this);
    return slotOf(consumer) < TraceConsumerArrayC::size();
}

// Consumers may come and go while they are called: the array is read again for each of them.
void TraceControllerC::deliver(TraceEnabledT mask, const char* traceClass, int indent, const char* format,
                               const ArgListC& args)
{
    const ErrnoKeeperC keeper;
    const TraceSectionC section(*this);
    const TraceDeliveryC delivery;
    for (; mask != 0; mask &= mask - 1) {
        const size_t slot = static_cast<size_t>(__builtin_ctz(mask));
        if (slot >= TraceConsumerArrayC::size()) break;
        TraceConsumerI* const consumer = TraceConsumerArrayC::operator[](slot).consumer;
        if (consumer == nullptr) continue;
        keeper.restore();
        if (consumer->message(traceClass, indent, format, args) != 0) unregisterConsumer(consumer);
    }
}

void TraceControllerC::announceValueChange(const char* traceClass, int indent)
{
    const ErrnoKeeperC keeper;
    const TraceSectionC section(*this);
    const TraceDeliveryC delivery;
    for (size_t i = 0; i < TraceConsumerArrayC::size(); ++i) {
        TraceConsumerI* const consumer = TraceConsumerArrayC::operator[](i).consumer;
        if (consumer != nullptr) consumer->valueChange(traceClass, indent);
    }
}

// ---- finding and creating classes -------------------------------------------------------------------

HashValT TraceControllerC::hashOf(const void* key) const
{
    return TraceControlVarC::hashOf(*static_cast<const TraceClassKeyT*>(key));
}

TraceControlVarC* TraceControllerC::child(TraceControlVarC* parent, const char* component, size_t size) const
{
    const TraceClassKeyT key = {parent, component, size};
    return static_cast<TraceControlVarC*>(HashTableC::get(&key));
}

// The class of that name, made now if need be. A prefix goes for the class itself when there is one, otherwise
// for the last class of the path that there is, and for all that are made.
TraceControlVarC* TraceControllerC::find(const char* name)
{
    short increment = -1;
    const char* at = withoutPrefix(name, increment);
    TraceControlVarC* found = nullptr;
    for (;;) {
        const char* const end = strchrnul(at, '/');
        TraceControlVarC* const next = child(found, at, static_cast<size_t>(end - at));
        if (next == nullptr) break;
        found = next;
        if (*end == 0) {
            setIncrement(*found, increment);
            return found;
        }
        at = end + 1;
    }
    if (found != nullptr) setIncrement(*found, increment);
    return create(found, name, static_cast<size_t>(at - name), increment);
}

void TraceControllerC::setIncrement(TraceControlVarC& traceClass, short increment)
{
    if (increment < 0 || traceClass.detail_incr == increment) return;
    setRelaxed(traceClass.detail_incr, increment);
    recompute(traceClass);
}

// Makes what is missing of the path below `parent`, whose part of the name has `done` bytes. Consumers that
// are told of a class may name others, the missing ones among them, and change masks.
TraceControlVarC* TraceControllerC::create(TraceControlVarC* parent, std::string name, size_t done, short increment)
{
    const ErrnoKeeperC keeper;
    TraceDetailsC details = detailsAt(parent);
    unsigned long changes = m_changes;
    for (;;) {
        const size_t end = std::min(name.find('/', done), name.size());
        const TraceClassKeyT key = {parent, name.data() + done, end - done};
        TraceControlVarC* traceClass = child(key.parent, key.component, key.size);
        const bool isNew = traceClass == nullptr;
        if (isNew) traceClass = new TraceControlVarC(key, increment < 0 ? short{1} : increment);
        details.descend(*this, *traceClass);
        if (isNew) {
            const char separator = std::exchange(name[end], '\0');
            add(*traceClass, details, name.c_str());
            name[end] = separator;
        }
        if (end == name.size()) return traceClass;
        if (std::exchange(changes, m_changes) != m_changes) details = detailsAt(traceClass);
        parent = traceClass;
        done = end + 1;
    }
}

// Puts a new class into the tree and tells the consumers its name.
void TraceControllerC::add(TraceControlVarC& traceClass, const TraceDetailsC& details, const char* name)
{
    TraceControlVarC* const parent = traceClass.parent();
    if (parent != nullptr) setRelaxed(traceClass.net, parent->net & details.reach());
    HashTableC::add(&traceClass);
    (parent != nullptr ? parent->children : m_roots).add(&traceClass);

    const TraceDeliveryC delivery;
    for (size_t i = 0; i < TraceConsumerArrayC::size(); ++i) {
        TraceConsumerI* const consumer = TraceConsumerArrayC::operator[](i).consumer;
        if (consumer != nullptr) consumer->newClass(name);
    }
}

// ---- masks ------------------------------------------------------------------------------------------

// A class on the way through a part of the tree.
struct TraceControllerC::StepT {
    TraceControlVarC* traceClass;
    TraceDetailsC details;   // above the class, and after update in it
    size_t nextChild;
};

TraceDetailsC TraceControllerC::detailsAt(TraceControlVarC* traceClass) const
{
    ArrayM<const TraceControlVarC*> path;
    for (; traceClass != nullptr; traceClass = traceClass->parent()) path << traceClass;
    TraceDetailsC details;
    for (size_t i = path.size(); i > 0; --i) details.descend(*this, *path[i - 1]);
    return details;
}

// Computes the mask of a class. Whether its children have to follow: below a class that was off and is off
// nothing changes.
bool TraceControllerC::update(StepT& step) const
{
    TraceControlVarC& traceClass = *step.traceClass;
    step.details.descend(*this, traceClass);
    const TraceEnabledT before = traceClass.net;
    TraceEnabledT net = traceClass.self & traceClass.specified;
    if (traceClass.parent() != nullptr) {
        net |= ~traceClass.specified & traceClass.parent()->net & step.details.reach();
    }
    setRelaxed(traceClass.net, net);
    return (before | net) != 0;
}

// A class and those below it; all of them when it is forced.
void TraceControllerC::recompute(TraceControlVarC& top, bool isForced)
{
    ++m_changes;
    ArrayM<StepT> path;
    StepT first = {&top, detailsAt(top.parent()), 0};
    if (update(first) || isForced) path << first;
    while (path.size() > 0) {
        StepT& step = path[path.size() - 1];
        if (step.nextChild == step.traceClass->children.size()) {
            path.truncate(path.size() - 1);
            continue;
        }
        StepT below = {step.traceClass->children[step.nextChild++], step.details, 0};
        if (update(below) || isForced) path << below;
    }
}

long TraceControllerC::enable(TraceConsumerI* consumer, const char* traceClass)
{
    return setClass(consumer, traceClass, true, true);
}

long TraceControllerC::disable(TraceConsumerI* consumer, const char* traceClass)
{
    return setClass(consumer, traceClass, false, true);
}

long TraceControllerC::inherit(TraceConsumerI* consumer, const char* traceClass)
{
    return setClass(consumer, traceClass, false, false);
}

long TraceControllerC::setClass(TraceConsumerI* consumer, const char* traceClass, bool isOn, bool isSpecified)
{
    const TraceSectionC section(*this);
    if (!isRegistered(consumer) || consumer == nullptr) return TVXERR_TRACE_UNKNOWN_CONSUMER;
    if (traceClass == nullptr) return INVALID;
    if (slotOf(consumer) >= TRACE_BITS) return 0;

    TraceControlVarC& found = *find(traceClass);
    const size_t slot = slotOf(consumer);   // who was told of a new class may have dropped it
    if (slot >= std::min(TraceConsumerArrayC::size(), TRACE_BITS)) return TVXERR_TRACE_UNKNOWN_CONSUMER;
    const TraceEnabledT bit = TraceEnabledT{1} << slot;
    setRelaxed(found.self, isOn ? found.self | bit : found.self & ~bit);
    setRelaxed(found.specified, isSpecified ? found.specified | bit : found.specified & ~bit);
    recompute(found);
    return 0;
}

// ---- values and names -------------------------------------------------------------------------------

long TraceControllerC::getValues(const char* traceClass, TraceValuesT** values)
{
    if (traceClass == nullptr || values == nullptr) return INVALID;
    const TraceSectionC section(*this);
    *values = find(traceClass);
    return 0;
}

long TraceControllerC::setValues(const char* traceClass, const TraceValuesT* values)
{
    if (traceClass == nullptr || values == nullptr) return INVALID;
    const TraceSectionC section(*this);
    const TraceValuesT wanted = *values;   // of the same class, perhaps
    TraceControlVarC& found = *find(traceClass);
    setRelaxed(found.self, wanted.self);
    setRelaxed(found.specified, wanted.specified);
    setRelaxed(found.detail_incr, static_cast<short>(clampedDetail(wanted.detail_incr)));
    setRelaxed(found.count, wanted.count);
    setRelaxed(found.total, wanted.total);
    recompute(found);
    return 0;
}

const ArrayM<TraceControlVarC*>& TraceControllerC::childrenOf(const char* traceClass)
{
    return traceClass == nullptr || *traceClass == 0 ? m_roots : find(traceClass)->children;
}

long TraceControllerC::getChildCount(const char* traceClass, int* result)
{
    const TraceSectionC section(*this);
    return give(result, static_cast<int>(std::min<size_t>(childrenOf(traceClass).size(), INT_MAX)));
}

long TraceControllerC::getChild(const char* traceClass, int index, const char** result)
{
    const TraceSectionC section(*this);
    const ArrayM<TraceControlVarC*>& children = childrenOf(traceClass);
    if (index < 0 || static_cast<size_t>(index) >= children.size()) return INVALID;
    return give<const char*>(result, children[static_cast<size_t>(index)]->name());
}

// ---- the timer --------------------------------------------------------------------------------------

long TraceControllerC::getTimer(long long* ticks)
{
    if (ticks == nullptr) return INVALID;
    *ticks = 0;
    if (!m_isTimerStarted) {
        const TraceSectionC section(*this);
        if (!m_isTimerStarted) {
            if (GetTimeOfDay(&start_tod) != 0) return TVXERR_TRACE_NO_TIME;
            m_timerStart = monotonicMicroseconds();
            m_isTimerStarted = true;
        }
    }
    *ticks = monotonicMicroseconds() - m_timerStart;
    return 0;
}

long TraceControllerC::getTimerFrequency(long long* ticksPerSecond) { return give(ticksPerSecond, MICROSECONDS); }

// ---- the task ---------------------------------------------------------------------------------------

const char* TraceControllerC::kept(const char* text) { return m_texts.insert(text).first->c_str(); }

void TraceControllerC::setTask(const char* programName, const char* traceDescriptionFile)
{
    const TraceSectionC section(*this);
    if (programName != nullptr) program_name = kept(programName);
    if (traceDescriptionFile != nullptr) trace_descr_file = kept(traceDescriptionFile);
    task_id = static_cast<int>(GetTaskId());
}

long TraceControllerC::programName(const char** name)
{
    const TraceSectionC section(*this);
    return give(name, program_name);
}

long TraceControllerC::taskId(int* id)
{
    const TraceSectionC section(*this);
    return give(id, task_id != 0 ? task_id : static_cast<int>(GetTaskId()));
}

long TraceControllerC::traceDescriptionFile(const char** path)
{
    const TraceSectionC section(*this);
    return give(path, trace_descr_file);
}
