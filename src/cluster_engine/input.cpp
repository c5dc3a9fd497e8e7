#include "cluster_engine/input.h"

#include <utility>

namespace {

template <typename T>
constexpr bool IS_REPORT = std::is_same_v<T, CNodeReport> || std::is_same_v<T, CContainerReport> ||
                           std::is_same_v<T, CNvrReport>;

/// An input of one kind, as it stands in JSON.
template <typename T>
struct CWholeInput {
    int64_t iTime = 0;
    std::string strName = T::NAME;
    T body;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need(PSZ_INPUT_TIME, self.iTime);
        form.Need(PSZ_INPUT_KIND, self.strName);
        T::Fields(form, self.body);
    }
};

template <typename T>
bool ReadInput(const Json::Value& json, CInput& input, CFieldFault& fault,
               std::size_t* puiUnknown) {
    CWholeInput<T> whole;
    FromJson(json, whole, fault, IS_REPORT<T> ? puiUnknown : nullptr);
    input.iTime = whole.iTime;
    input.body = std::move(whole.body);
    if (fault.strFault.empty() && (input.iTime < 0 || input.iTime > NUMERIC_LAST_SECOND)) {
        fault = {PSZ_INPUT_TIME,
                 "must be a second from 0 to " + std::to_string(NUMERIC_LAST_SECOND)};
    }
    return fault.strFault.empty();
}

template <std::size_t... KINDS>
bool ReadNamed(const std::string& strName, const Json::Value& json, CInput& input,
               CFieldFault& fault, std::size_t* puiUnknown, std::index_sequence<KINDS...>) {
    bool bRead = false;
    const bool bKnown = ((strName == std::variant_alternative_t<KINDS, InputBody>::NAME &&
                          ((bRead = ReadInput<std::variant_alternative_t<KINDS, InputBody>>(
                                json, input, fault, puiUnknown)),
                           true)) ||
                         ...);
    if (!bKnown) {
        fault = {PSZ_INPUT_KIND, "is no kind of input"};
    }
    return bRead;
}

}  // namespace

const char* InputName(const InputBody& body) {
    return std::visit([](const auto& kind) -> const char* { return kind.NAME; }, body);
}

Json::Value InputToJson(const CInput& input) {
    return std::visit(
        [&](const auto& kind) {
            CWholeInput<std::decay_t<decltype(kind)>> whole;
            whole.iTime = input.iTime;
            whole.body = kind;
            return ToJson(whole);
        },
        input.body);
}

bool InputFromJson(const Json::Value& json, CInput& input, CFieldFault& fault,
                   std::size_t* puiUnknown) {
    if (!json.isObject() || !json[PSZ_INPUT_KIND].isString()) {
        fault = {PSZ_INPUT_KIND, "must name the kind of the input"};
        return false;
    }
    return ReadNamed(json[PSZ_INPUT_KIND].asString(), json, input, fault, puiUnknown,
                     std::make_index_sequence<std::variant_size_v<InputBody>>());
}
