#include "serve/service_hold.h"

#include <ctime>

#include "command/cluster_holder.h"
#include "command/exit_code.h"
#include "reference_host/code_text.h"
#include "serve/held_store.h"

int CServiceHold::Take(const std::string& strUrl,
                       const std::function<void(const std::string&)>& say, std::ostream& errors) {
    const auto onLost = [&wakeups = m_wakeups] { wakeups.Send(EWakeup::HOLD_LOST); };
    bool bSaid = false;
    const auto isWaiting = [&](const CStoreAnswer& other) {
        if (!bSaid) {
            say(Holder(other) + "; waiting in case that it is gone");
            bSaid = true;
        }
        const bool bStop = m_wakeups.Await(CWakeups::Clock::now()) == EWakeup::STOP;
        if (bStop) {
            m_wakeups.Send(EWakeup::STOP);
        }
        return !bStop;
    };
    CStoreAnswer holder;
    const int iCode =
        HoldOrWait(*m_pStore, GetPath(), HolderText(ThisProcess(strUrl, std::time(nullptr))),
                   onLost, isWaiting, holder);
    if (iCode == STORE_NAME_HELD) {
        errors << Holder(holder) << std::endl;
        return EXIT_REFUSED;
    }
    if (iCode != 0) {
        errors << "cannot hold " << PlaceText(m_place) << ": " << CodeText(iCode) << std::endl;
        return EXIT_COULD_NOT;
    }
    m_pHeld =
        std::make_shared<CHeldStore>(m_pStore, CStoreCondition{GetPath(), holder.iVersion}, onLost);
    return EXIT_DONE;
}

void CServiceHold::SayHolder(std::ostream& errors) {
    CStoreAnswer holder;
    if (m_pStore->FindHolder(GetPath(), holder) == 0 && holder.bExists) {
        errors << Holder(holder) << std::endl;
    }
}

bool CServiceHold::CanBeAsked() {
    CStoreAnswer holder;
    return m_pStore->FindHolder(GetPath(), holder) == 0;
}

void CServiceHold::LetGo() {
    m_pHeld.reset();
    m_pStore.reset();
}

std::string CServiceHold::GetPath() const {
    return HolderPath(m_place.strClusterCode);
}

std::string CServiceHold::Holder(const CStoreAnswer& holder) const {
    return PlaceText(m_place) + " is run by " + HolderWords(ReadHolder(holder));
}
