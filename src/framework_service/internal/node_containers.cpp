#include "internal/node_containers.h"

#include <algorithm>
#include <list>

namespace framework_internal {

unsigned int DropContainerType(CNode& node, const std::string& strContainerType) {
    std::list<std::string> containerList;
    node.GetContainerList(containerList);
    const auto it = std::find(containerList.begin(), containerList.end(), strContainerType);
    if (it != containerList.end()) {
        containerList.erase(it);
    }
    node.SetContainerList(containerList);
    return static_cast<unsigned int>(containerList.size());
}

}  // namespace framework_internal
