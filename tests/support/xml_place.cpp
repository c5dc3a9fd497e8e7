#include "support/xml_place.h"

#include <regex>
#include <vector>

std::string CurrentElement(PELU::CXml& xml) {
    constexpr char MARK[] = "MarkOfTheCursor";
    if (!xml.AddChildElem(MARK)) {
        return "nowhere";
    }
    unsigned int uiLen = 0;
    const std::string strText = xml.GetXMLStream(uiLen);
    xml.IntoElem();
    xml.RemoveElem();
    xml.OutOfElem();

    std::vector<std::string> open;
    const std::regex tag("<(/?)([A-Za-z]\\w*)[^>]*?(/?)>");
    for (std::sregex_iterator it(strText.begin(), strText.end(), tag); it != std::sregex_iterator();
         ++it) {
        if ((*it)[2] == MARK) {
            return open.back();
        }
        if ((*it)[1].length() != 0) {
            open.pop_back();
        } else if ((*it)[3].length() == 0) {
            open.push_back((*it)[2]);
        }
    }
    return "lost";
}
