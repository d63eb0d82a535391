// Runs the slices of one request of a service on the calling thread and on
// the pool threads of the service's work queue.
//
// No thread owns a slice: each takes the next slice nobody has taken, and
// goes on taking slices until none is left. The queue receives one item for
// each pool thread that can work beside the calling thread (the process's
// processors less one), not one per slice: a pool thread, once awake, then
// converts slice after slice instead of going back to sleep after each item
// and being woken for the next, taking the processor from the calling thread
// each time; and no third thread on two processors takes turns with the
// other two, holding up the end of the request with the slice it holds while
// it waits for its turn. The calling thread takes slices from the moment it
// has handed the items over.
#ifndef QXBASE_BUFFERENGINE_QXCSLICERUNNER_H
#define QXBASE_BUFFERENGINE_QXCSLICERUNNER_H

#include <atomic>
#include <cstdint>

class CQxConcurrentWorkQueue;

class CQxcSliceRunner {
public:
    typedef void (*PFNSlice)(void* in_pContext, uint32_t in_uiSlice);

    // Makes the queue, named in_pszName; throws what its construction throws.
    explicit CQxcSliceRunner(const char* in_pszName);
    // Waits for the queue's items, as the queue does.
    ~CQxcSliceRunner();

    // Runs in_pfnSlice(in_pContext, i) once for every i below in_uiSlices
    // and returns when every slice has run and the queue is idle. A single
    // slice, or a process with one processor, runs on the calling thread
    // alone. One request at a time.
    void Run(uint32_t in_uiSlices, PFNSlice in_pfnSlice, void* in_pContext);

    // Pool threads that may work beside the calling thread.
    int GetHelperCount() const { return m_iMaxHelpers; }

private:
    CQxcSliceRunner(const CQxcSliceRunner&) = delete;
    CQxcSliceRunner& operator=(const CQxcSliceRunner&) = delete;

    // One queue item.
    void Help();
    void TakeSlices();

    CQxConcurrentWorkQueue* m_pQueue;
    int m_iMaxHelpers;
    PFNSlice m_pfnSlice;
    void* m_pContext;
    uint32_t m_uiSlices;
    std::atomic<uint32_t> m_uiNext;       // the first slice nobody has taken
    std::atomic<uint32_t> m_uiItemsDone;  // items whose task has returned
};

#endif  // QXBASE_BUFFERENGINE_QXCSLICERUNNER_H
