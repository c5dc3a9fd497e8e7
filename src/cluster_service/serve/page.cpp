#include "serve/page.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string_view>

extern const std::string_view PAGE_HTML;
extern const std::string_view PAGE_STYLE;
extern const std::string_view PAGE_SCRIPT;
extern const std::string_view PAGE_PARTS;
extern const std::string_view PAGE_SERVICE;
extern const std::string_view PAGE_ICON;

namespace {

constexpr char PSZ_SCRIPT[] = "text/javascript; charset=utf-8";

struct CPageFile {
    const char* pszPath;
    const char* pszType;
    std::shared_ptr<const std::string> pText;
};

std::shared_ptr<const std::string> Shared(std::string_view text) {
    return std::make_shared<const std::string>(text);
}

}  // namespace

std::optional<CHttpReply> PageReply(const std::string& strPath) {
    static const CPageFile FILES[] = {
        {"/", "text/html; charset=utf-8", Shared(PAGE_HTML)},
        {"/style.css", "text/css; charset=utf-8", Shared(PAGE_STYLE)},
        {"/page.js", PSZ_SCRIPT, Shared(PAGE_SCRIPT)},
        {"/parts.js", PSZ_SCRIPT, Shared(PAGE_PARTS)},
        {"/service.js", PSZ_SCRIPT, Shared(PAGE_SERVICE)},
        {"/icon.svg", "image/svg+xml", Shared(PAGE_ICON)},
    };
    const auto it =
        std::find_if(std::begin(FILES), std::end(FILES),
                     [&strPath](const CPageFile& file) { return strPath == file.pszPath; });
    if (it == std::end(FILES)) {
        return std::nullopt;
    }
    CHttpReply reply;
    reply.pszType = it->pszType;
    reply.pBody = it->pText;
    // Nothing comes from elsewhere, and no other page shows this one within its own.
    reply.headers = {
        {"Content-Security-Policy",
         "default-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
        {"X-Content-Type-Options", "nosniff"},
        {"Referrer-Policy", "no-referrer"},
        {"Cache-Control", "no-cache"},
    };
    return reply;
}
