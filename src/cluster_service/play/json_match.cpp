#include "play/json_match.h"

#include <algorithm>

namespace {

bool IsSame(const Json::Value& value, const Json::Value& wanted) {
    if (value.isIntegral() && wanted.isIntegral()) {
        return value.isInt64() == wanted.isInt64() &&
               (value.isInt64() ? value.asInt64() == wanted.asInt64()
                                : value.asUInt64() == wanted.asUInt64());
    }
    return value == wanted;
}

bool HasMembers(const Json::Value& value, const Json::Value& wanted) {
    const auto names = wanted.getMemberNames();
    return value.isObject() &&
           std::all_of(names.begin(), names.end(), [&](const std::string& strName) {
               return value.isMember(strName) && HasWanted(value[strName], wanted[strName]);
           });
}

bool HasElements(const Json::Value& value, const Json::Value& wanted) {
    return value.isArray() &&
           std::all_of(wanted.begin(), wanted.end(), [&](const Json::Value& one) {
               return std::any_of(value.begin(), value.end(), [&](const Json::Value& element) {
                   return HasWanted(element, one);
               });
           });
}

}  // namespace

bool HasWanted(const Json::Value& value, const Json::Value& wanted) {
    return wanted.isObject()  ? HasMembers(value, wanted)
           : wanted.isArray() ? HasElements(value, wanted)
                              : IsSame(value, wanted);
}
