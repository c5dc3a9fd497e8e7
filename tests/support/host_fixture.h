#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "reference_host/memory_store.h"
#include "support/recording_logger.h"

/// A test on a fresh host: an empty memory store, a recording logger, default settings, the cluster
/// code "X", no directories, no links and the real clock.
class CHostTest : public ::testing::Test {
protected:
    CHostTest();
    ~CHostTest() override;

    /// The store path of a document: "/CloudX" and its suffix.
    static std::string Path(const std::string& strSuffix);

    const std::shared_ptr<CMemoryStore> m_pStore = std::make_shared<CMemoryStore>();
    CRecordingLogger m_logger;
};
