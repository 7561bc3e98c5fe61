// tracecim.h: the trace controller. What its operations do stands in tracecontroller.h.
//
// Thread safety: latched by the critical section, which consumers share. getTimer takes it only once.
// Ownership:     owns the classes; lives as long as the process, but in tests.
#ifndef TVXCMN_TRACING_TRACECIM_H
#define TVXCMN_TRACING_TRACECIM_H

#include "arglist.h"
#include "atomicm.h"
#include "contemplate.h"
#include "hashtbl.h"
#include "latch.h"
#include "osversion.h"
#include "tracecontroller.h"
#include "tracing/traceclass.h"

#include <cstddef>
#include <string>
#include <sys/time.h>
#include <unordered_set>

const size_t TRACE_BITS = 32;   // of a mask; consumers in further slots get nothing

struct TraceConsumerEntryC {
    TraceConsumerI* consumer;   // null: a free slot
    int detail;                 // 0 to 9
};

class TraceConsumerArrayC : public ArrayM<TraceConsumerEntryC> {
public:
    // The first slot that holds `consumer`, null for a free one; size() when there is none.
    size_t slotOf(const TraceConsumerI* consumer) const;
};

// How much detail each consumer has left at a place in the tree, on the way down from the root.
class TraceDetailsC {
public:
    // Above the root nobody has any.
    TraceDetailsC() noexcept;
    // Goes down to a class.
    void descend(const TraceConsumerArrayC& consumers, const TraceValuesT& values);
    // The consumers whose bits a class here may inherit.
    TraceEnabledT reach() const noexcept;

private:
    signed char m_left[TRACE_BITS];   // -1: none, which it stays until the consumer sets a class
};

class TraceControllerC : public TraceControllerI, protected HashTableC, protected TraceConsumerArrayC {
public:
    TraceControllerC() = default;
    ~TraceControllerC() override;
    TraceControllerC(const TraceControllerC&) = delete;
    TraceControllerC& operator=(const TraceControllerC&) = delete;

    long registerConsumer(TraceConsumerI* consumer, int flags, int detail) override;
    long unregisterConsumer(TraceConsumerI* consumer) override;
    long setDetail(TraceConsumerI* consumer, int detail) override;
    long enable(TraceConsumerI* consumer, const char* traceClass) override;
    long disable(TraceConsumerI* consumer, const char* traceClass) override;
    long inherit(TraceConsumerI* consumer, const char* traceClass) override;
    long getValues(const char* traceClass, TraceValuesT** values) override;
    long setValues(const char* traceClass, const TraceValuesT* values) override;
    long getChildCount(const char* traceClass, int* count) override;
    long getChild(const char* traceClass, int index, const char** child) override;
    long getTimer(long long* ticks) override;
    long getTimerFrequency(long long* ticksPerSecond) override;
    long programName(const char** name) override;
    long taskId(int* id) override;
    long traceDescriptionFile(const char** path) override;

    void enterCriticalSection() { m_Latch.enter(); }
    void leaveCriticalSection() { m_Latch.leave(); }

    // Hands a message to the consumers in `mask`. Each of them finds errno as the caller had it, and so does
    // the caller.
    void deliver(TraceEnabledT mask, const char* traceClass, int indent, const char* format, const ArgListC& args);
    // Tells all consumers that a value of a class has changed.
    void announceValueChange(const char* traceClass, int indent);
    bool isRegistered(const TraceConsumerI* consumer);
    // Stores who is running; a null text keeps the former one.
    void setTask(const char* programName, const char* traceDescriptionFile);

protected:
    CountingLatchC m_Latch;

private:
    struct StepT;

    HashValT hashOf(const void* key) const override;

    TraceControlVarC* find(const char* name);
    TraceControlVarC* child(TraceControlVarC* parent, const char* component, size_t size) const;
    TraceControlVarC* create(TraceControlVarC* parent, std::string name, size_t done, short increment);
    void add(TraceControlVarC& traceClass, const TraceDetailsC& details, const char* name);
    void setIncrement(TraceControlVarC& traceClass, short increment);
    const ArrayM<TraceControlVarC*>& childrenOf(const char* traceClass);

    TraceDetailsC detailsAt(TraceControlVarC* traceClass) const;
    bool update(StepT& step) const;
    void recompute(TraceControlVarC& top, bool isForced = false);
    void forgetSlot(size_t slot);
    long setClass(TraceConsumerI* consumer, const char* traceClass, bool isOn, bool isSpecified);

    const char* kept(const char* text);

    const char* program_name = "";
    int task_id = 0;   // 0: nobody has registered yet
    const char* trace_descr_file = "";
    timeval start_tod = {0, 0};
    OSVersionInfoC osversion;
    // From here on what tells changes apart, keeps texts alive and measures time that no clock setting moves.
    ArrayM<TraceControlVarC*> m_roots;   // the classes without a parent
    unsigned long m_changes = 0;         // of masks and details
    std::unordered_set<std::string> m_texts;
    AtomicM<bool> m_isTimerStarted{false};
    long long m_timerStart = 0;   // microseconds of the monotonic clock at start_tod
};

// The length of a stay in the critical section.
class TraceSectionC {
public:
    explicit TraceSectionC(TraceControllerC& controller) : m_controller(controller)
    {
        m_controller.enterCriticalSection();
    }
    ~TraceSectionC() { m_controller.leaveCriticalSection(); }
    TraceSectionC(const TraceSectionC&) = delete;
    TraceSectionC& operator=(const TraceSectionC&) = delete;

private:
    TraceControllerC& m_controller;
};

#endif   // TVXCMN_TRACING_TRACECIM_H
