#pragma once

#include "cluster_engine/journal.h"
#include "support/registry_fixture.h"

/// Inputs as they come to a cluster with recorders, image analysers and cloud storage on the nodes
/// n1 to n5, drawn by a seed: most of them make sense, some do not.
class CRandomInputs {
public:
    CRandomInputs(unsigned int uiSeed, int64_t iNow) : m_dice(uiSeed), m_iNow(iNow) {}

    /// The next one; mostly a tick, a second later.
    CInput Next();

    /// The cluster document to begin with.
    static std::string Cluster();

private:
    InputBody Body();
    InputBody Report();
    InputBody Membership();
    InputBody Record();
    std::string Node() { return "n" + std::to_string(1 + m_dice.Below(5)); }
    std::string Task() { return "t" + std::to_string(m_dice.Below(60)); }

    CDice m_dice;
    int64_t m_iNow;
};
