#include "serve/end_in_time.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <system_error>

#include "command/exit_code.h"

namespace {

constexpr int SIGNALS[] = {SIGTERM, SIGINT};

/// Short of the five seconds within which a service has to be gone.
constexpr itimerspec TIME_TO_END{{0, 0}, {4, 500'000'000}};

/// @name What the signals' handlers work with
/// @{
std::atomic<const CWakeups*> g_pWakeups{nullptr};
std::atomic<bool> g_bEnds{false};
std::atomic<int> g_iExitCode{EXIT_COULD_NOT};
timer_t g_timer;
/// @}

[[noreturn]] void EndNow(const char* pszWhy) {
    [[maybe_unused]] const auto iWritten = write(STDERR_FILENO, pszWhy, std::strlen(pszWhy));
    _exit(g_iExitCode);
}

/// False when the service ends already.
bool BeginToEnd() {
    const bool bFirst = !g_bEnds.exchange(true);
    if (bFirst) {
        timer_settime(g_timer, 0, &TIME_TO_END, nullptr);
    }
    return bFirst;
}

void OnSignal(int) {
    const int iErrno = errno;
    if (!BeginToEnd()) {
        EndNow("ended at once\n");
    }
    g_pWakeups.load()->Send(EWakeup::STOP);
    errno = iErrno;
}

void OnTimeOver(int) {
    EndNow("ended before all was done and closed\n");
}

void SetHandler(int iSignal, void (*pHandler)(int)) {
    struct sigaction action {};
    action.sa_handler = pHandler;
    action.sa_flags = SA_RESTART;
    sigaction(iSignal, &action, nullptr);
}

void SetHandlers(void (*pHandler)(int)) {
    for (const int iSignal : SIGNALS) {
        SetHandler(iSignal, pHandler);
    }
}

}  // namespace

CEndInTime::CEndInTime(const CWakeups& wakeups) {
    struct sigevent event {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGALRM;
    if (timer_create(CLOCK_MONOTONIC, &event, &g_timer) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make a timer");
    }
    g_pWakeups = &wakeups;
    g_bEnds = false;
    g_iExitCode = EXIT_COULD_NOT;
    SetHandler(SIGALRM, &OnTimeOver);
    SetHandlers(&OnSignal);
}

CEndInTime::~CEndInTime() {
    SetHandlers(SIG_DFL);
    timer_delete(g_timer);
    SetHandler(SIGALRM, SIG_DFL);
}

void CEndInTime::Begin() {
    BeginToEnd();
}

void CEndInTime::WorkedOff(int iExitCode) {
    g_iExitCode = iExitCode;
}

bool CEndInTime::LeaveSignals() {
    SetHandlers(SIG_DFL);
    return !g_bEnds;
}
