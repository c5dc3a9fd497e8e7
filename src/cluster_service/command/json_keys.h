#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// A key where it stands in a JSON text.
struct CTextKey {
    std::string strPath;  ///< from the root, as "ClusterNode[1].NodeID"
    std::size_t offset;
    bool bRepeated;  ///< the same object has it before, too
};

/// Every key of a text that is well-formed, in its order.
std::vector<CTextKey> KeysOf(std::string_view text);

/// The path of what stands at an offset up to which the text is well-formed; empty for the root.
std::string KeyPathAt(std::string_view text, std::size_t offset);

/// The offset of the object or list that lies deeper than this many others; the text's end where
/// there is none.
std::size_t OffsetBelow(std::string_view text, std::size_t depth);

std::string Joined(const std::string& strPath, const std::string& strKey);
std::string Joined(const std::string& strPath, std::size_t index);
