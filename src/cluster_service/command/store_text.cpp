#include "command/store_text.h"

#include "command/text_document.h"
#include "common_service/oper_common.h"
#include "reference_host/code_text.h"
#include "reference_host/shown_text.h"
#include "reference_host/store.h"

CStoredText ReadFromStore(const CStoreDocument& document) {
    CTextDocument text;
    bool bDataEmpty = false;
    CStoredText stored;
    stored.iCode = COperCommon::GetDataFromZK(StorePath(document).c_str(), nullptr,
                                              document.node.uiBufLen, &text, bDataEmpty);
    if (stored.iCode == STORE_NODE_ABSENT) {
        return {};
    }
    stored.bExists = stored.iCode == ORVA_SUCCEED;
    stored.strText = text.GetText();
    return stored;
}

bool StoreAnswered(const CStoreDocument& document, int iCode, std::ostream& errors) {
    if (iCode != ORVA_SUCCEED) {
        errors << ShownText(StorePath(document)) << ": " << CodeText(iCode) << '\n';
    }
    return iCode == ORVA_SUCCEED;
}
