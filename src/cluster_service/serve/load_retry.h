#pragma once

#include <chrono>
#include <memory>

#include "serve/document_texts.h"

/// When a load that failed is tried again: at once when a document is not what it was then, and
/// otherwise after pauses that double from the first to the longest. What else can be mended, as a
/// plug-in file, nobody tells the service of.
class CLoadRetry {
public:
    using Clock = std::chrono::steady_clock;
    using Texts = std::shared_ptr<const CDocumentTexts::Texts>;

    /// A load that began with these documents has failed.
    void Failed(Texts pTexts, Clock::time_point now);

    /// Of the last load that failed.
    bool IsDue(const Texts& pTexts, Clock::time_point now) const {
        return pTexts != m_pTried || now >= m_next;
    }

private:
    Texts m_pTried;
    Clock::duration m_pause{};
    Clock::time_point m_next;
};
