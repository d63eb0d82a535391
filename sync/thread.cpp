// Threads on joinable POSIX threads; two manual-reset events are the only
// handshake between the creator and the new thread.
#include <qxbase/qxthread.h>

#include <signal.h>
#include <string.h>

namespace {

constexpr size_t kuiDefaultStackSize = 0x80000;
constexpr size_t kuiAffinityWords = sizeof(cpu_set_t) / sizeof(__cpu_mask);

[[noreturn]] void Fail(const char* in_pszMessage)
{
    throw CQxThreadException(in_pszMessage);
}

}  // namespace

void* ExecuteThread(void* in_pThread)
{
    static_cast<CQxThread*>(in_pThread)->Entry();
    return in_pThread;
}

CQxThread::CQxThread()
    : m_oResumeEvent(true),
      m_oFinishedEvent(true),
      m_i32Policy(SCHED_RR),
      m_i32Priority(1),
      m_bAffinityRequested(false),
      m_uiExitCode(1),
      m_pfnThreadProc(nullptr),
      m_pArgument(nullptr)
{
    m_uiThreadID = 0;
    CPU_ZERO(&m_sAffinity);
}

CQxThread::~CQxThread()
{
    if (m_uiThreadID != 0 && pthread_kill(m_uiThreadID, 0) == 0) {
        Resume();
        Wait(kulQxInfinite);
        if (pthread_join(m_uiThreadID, nullptr) != 0) Fail("CQxThread::~CQxThread -- pthread_join() failed");
    }
}

void CQxThread::Create(PFNQxThreadProc in_pfnThreadProc, void* in_pArgument, bool in_bCreateSuspended,
                       unsigned int in_uiStackSize, bool)
{
    if (m_uiThreadID != 0) Fail("CQxThread::Create -- m_uiThreadID is non-NULL");
    m_pfnThreadProc = in_pfnThreadProc;
    m_pArgument = in_pArgument;
    if (!m_pfnThreadProc) Fail("CQxThread::Create -- parameter in_pfnThreadProc is NULL");

    pthread_attr_t sAttributes;
    pthread_attr_init(&sAttributes);
    pthread_attr_setstacksize(&sAttributes, in_uiStackSize ? in_uiStackSize : kuiDefaultStackSize);
    pthread_attr_setdetachstate(&sAttributes, PTHREAD_CREATE_JOINABLE);
    pthread_attr_setscope(&sAttributes, PTHREAD_SCOPE_SYSTEM);
    pthread_create(&m_uiThreadID, &sAttributes, ExecuteThread, this);
    if (!in_bCreateSuspended) Resume();
    pthread_attr_destroy(&sAttributes);
}

void CQxThread::Entry()
{
    m_oFinishedEvent.Reset();
    _SetAffinityMask();
    _SetPriority();
    WaitOnResume();
    m_uiExitCode.store(m_pfnThreadProc(m_pArgument), std::memory_order_relaxed);
    m_oFinishedEvent.Set();
}

void CQxThread::Resume()
{
    m_oResumeEvent.Set();
}

void CQxThread::Suspend()
{
    m_oResumeEvent.Reset();
}

void CQxThread::WaitOnResume()
{
    m_oResumeEvent.Wait(kulQxInfinite);
}

bool CQxThread::Wait(unsigned long in_ulMilliseconds)
{
    return m_oFinishedEvent.Wait(in_ulMilliseconds);
}

unsigned int CQxThread::GetExitCode() const
{
    return m_uiExitCode.load(std::memory_order_relaxed);
}

void CQxThread::SetPriority(int in_iPriority)
{
    int iClamped = in_iPriority < -15 ? -15 : (in_iPriority > 32 ? 32 : in_iPriority);
    m_i32Priority.store(iClamped * 2 + 31, std::memory_order_relaxed);
    if (!_SetPriority()) Fail("CQxThread::SetPriority -> error occurred in pthread_setschedparam");
}

bool CQxThread::_SetPriority()
{
    if (m_uiThreadID == 0) return true;
    sched_param sParameter;
    memset(&sParameter, 0, sizeof(sParameter));
    sParameter.sched_priority = m_i32Priority.load(std::memory_order_relaxed);
    return pthread_setschedparam(m_uiThreadID, m_i32Policy, &sParameter) == 0;
}

void CQxThread::SetAffinityMask(unsigned int in_uiMask)
{
    for (unsigned int uiBit = 0; uiBit < 32; ++uiBit) {
        if (!(in_uiMask & (1u << uiBit))) continue;
        m_bAffinityRequested.store(true, std::memory_order_relaxed);
        __atomic_fetch_or(&m_sAffinity.__bits[uiBit / (8 * sizeof(__cpu_mask))],
                          static_cast<__cpu_mask>(1) << (uiBit % (8 * sizeof(__cpu_mask))), __ATOMIC_RELAXED);
    }
    if (!_SetAffinityMask()) Fail("CQxThread::SetAffinityMask -> error occurred in pthread_setaffinity_np");
}

bool CQxThread::_SetAffinityMask()
{
    if (m_uiThreadID == 0 || !m_bAffinityRequested.load(std::memory_order_relaxed)) return true;
    cpu_set_t sAffinity;
    for (size_t i = 0; i < kuiAffinityWords; ++i)
        sAffinity.__bits[i] = __atomic_load_n(&m_sAffinity.__bits[i], __ATOMIC_RELAXED);
    return pthread_setaffinity_np(m_uiThreadID, sizeof(cpu_set_t), &sAffinity) == 0;
}

void CQxThread::SetPublicThreadName(const char*) {}

void CQxThread::_setThreadName() {}

CQxCOMThread::CQxCOMThread() {}

CQxCOMThread::~CQxCOMThread() {}

void CQxCOMThread::Create(PFNQxThreadProc in_pfnThreadProc, void* in_pArgument, bool in_bCreateSuspended,
                          unsigned int in_uiStackSize, bool)
{
    CQxThread::Create(in_pfnThreadProc, in_pArgument, in_bCreateSuspended, in_uiStackSize, false);
}
