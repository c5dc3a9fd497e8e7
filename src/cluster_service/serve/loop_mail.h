#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "serve/socket_handle.h"

struct MHD_Connection;

struct CStandUp {
    void operator()(std::atomic<std::size_t>* puiTaken) const { --*puiTaken; }
};

/// One of the counted seats is taken as long as this is held.
using Seat = std::unique_ptr<std::atomic<std::size_t>, CStandUp>;

/// Who was let in.
struct CClient {
    CSocketHandle socket;
    Seat seat;
    bool bTooMany = false;  ///< one more than allowed
};

/// How one connection waits for its answer or for more of its stream; the mail guards it.
struct CRest {
    enum class EState {
        AWAKE,
        EXPECTS,  ///< it goes on in the loop's next turn
        RESTS,    ///< suspended until it is woken
        WOKEN,    ///< since it was to wait last
    };

    EState eState = EState::AWAKE;
    MHD_Connection* pConnection = nullptr;  ///< the one that rests
};

/// What other threads leave for a loop: clients that were let in, and word that something has come
/// for a connection that waits. The loop takes it all at once, and is woken once for many. It
/// outlives the loop as long as an answer is owed.
class CLoopMail {
public:
    struct CContents {
        std::vector<CClient> clients;
        std::vector<MHD_Connection*> woken;  ///< that are suspended
    };

    /// Before anything else. False, with errno, when it cannot be opened.
    bool Open();

    /// @name On any thread
    /// @{
    void Add(CClient client);

    /// Something has come for this one.
    void Wake(CRest& rest);

    /// Wakes the loop alone.
    void Wake();
    /// @}

    /// @name On the loop's thread
    /// @{

    /// A request has no answer yet. Most are answered in a moment: it waits for the loop's next
    /// turn first, which costs no call of the system, and only then it rests. False when it was
    /// woken since the last time.
    bool Expect(CRest& rest, MHD_Connection* pConnection);

    /// Suspends the connection, whose handler or content reader asks for it. False when it was
    /// woken since the last time.
    bool Rest(CRest& rest, MHD_Connection* pConnection);

    /// Waits, but not longer than that, until all is there that was expected in this turn.
    void AwaitExpected(std::chrono::milliseconds most);

    /// Waits, but not longer than that, until there is mail or the file is readable.
    void Sleep(int iFile, std::chrono::milliseconds most);

    CContents Take();
    /// @}

private:
    void WakeLocked();

    CSocketHandle m_event;  ///< the loop is to wake up

    std::mutex m_mutex;  ///< guards everything below, and each CRest
    CContents m_contents;
    bool m_bNew = false;     ///< since the loop took it last
    bool m_bAsleep = false;  ///< and not woken yet
    std::size_t m_uiExpected = 0;
    std::condition_variable m_allCame;
};
