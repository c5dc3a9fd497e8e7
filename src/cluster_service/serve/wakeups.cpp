#include "serve/wakeups.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace {

/// In the unit of poll, rounded up; -1 without a deadline.
int LeftUntil(std::optional<CWakeups::Clock::time_point> deadline) {
    if (!deadline) {
        return -1;
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(*deadline - CWakeups::Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
}

}  // namespace

CWakeups::CWakeups() {
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    }
    m_fdOut = pipe[0];
    m_fdIn = pipe[1];
}

CWakeups::~CWakeups() {
    close(m_fdIn);
    close(m_fdOut);
}

/// A pipe that is full has enough to wake for.
void CWakeups::Send(EWakeup eWakeup) const {
    [[maybe_unused]] const auto iWritten = write(m_fdIn, &eWakeup, sizeof(eWakeup));
}

std::optional<EWakeup> CWakeups::Await(std::optional<Clock::time_point> deadline) const {
    EWakeup eWakeup{};
    while (read(m_fdOut, &eWakeup, sizeof(eWakeup)) != sizeof(eWakeup)) {
        pollfd readable{m_fdOut, POLLIN, 0};
        if (poll(&readable, 1, LeftUntil(deadline)) == 0) {
            return std::nullopt;
        }
    }
    return eWakeup;
}
