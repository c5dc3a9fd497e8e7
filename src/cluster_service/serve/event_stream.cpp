#include "serve/event_stream.h"

#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t NUMERIC_EVENTS_AT_ONCE = 100;
constexpr char PSZ_MISSED[] = "missed";
constexpr char PSZ_COMMENT[] = ":\n\n";

class CEventStream : public IReplyStream {
public:
    CEventStream(CEventLog& log, uint64_t ullSince, std::chrono::seconds silence)
        : m_log(log), m_silence(silence), m_ullSince(ullSince) {}

    ~CEventStream() override {
        if (m_ullListener != 0) {
            m_log.Forget(m_ullListener);
        }
    }
    CEventStream(const CEventStream&) = delete;
    CEventStream& operator=(const CEventStream&) = delete;

    bool Read(std::string& strText) override {
        std::vector<CNumberedEvent> events;
        const uint64_t ullMissed = m_log.Read(m_ullSince, NUMERIC_EVENTS_AT_ONCE, events);
        if (ullMissed != 0) {
            AppendMissed(strText, ullMissed);
        }
        for (const CNumberedEvent& event : events) {
            AppendEvent(strText, event);
        }
        KeepAlive(strText);
        return true;
    }

    void Listen(std::function<void()> wake) override {
        m_ullListener = m_log.Listen(std::move(wake));
    }

private:
    static void Append(std::string& strText, const std::string& strName, const Json::Value& data) {
        strText += "event: " + strName + "\ndata: " + JsonLine(data) + "\n\n";
    }

    static void AppendMissed(std::string& strText, uint64_t ullMissed) {
        Json::Value data;
        data[PSZ_MISSED] = Json::UInt64{ullMissed};
        Append(strText, PSZ_MISSED, data);
    }

    static void AppendEvent(std::string& strText, const CNumberedEvent& event) {
        strText += "id: " + std::to_string(event.ullNumber) + '\n';
        Append(strText, NameOf(event.event.eEvent), ToJson(event));
    }

    void KeepAlive(std::string& strText) {
        const Clock::time_point now = Clock::now();
        if (strText.empty() && now - m_said >= m_silence) {
            strText = PSZ_COMMENT;
        }
        if (!strText.empty()) {
            m_said = now;
        }
    }

    CEventLog& m_log;
    const std::chrono::seconds m_silence;
    uint64_t m_ullSince;
    uint64_t m_ullListener = 0;
    Clock::time_point m_said = Clock::now();
};

}  // namespace

std::unique_ptr<IReplyStream> MakeEventStream(CEventLog& log, uint64_t ullSince,
                                              std::chrono::seconds silence) {
    return std::make_unique<CEventStream>(log, ullSince, silence);
}
