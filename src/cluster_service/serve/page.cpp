#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "serve/embedded.h"
#include "serve/question.h"

namespace {

constexpr char PSZ_SCRIPT[] = "text/javascript; charset=utf-8";

struct CPageFile {
    const char* pszType;
    std::shared_ptr<const std::string> pText;

    CPageFile(const char* pszOfType, std::string_view text)
        : pszType(pszOfType), pText(std::make_shared<const std::string>(text)) {}
};

}  // namespace

CHttpReply ShowPageFile(const CAsked& asked, const CClusterView& /*view*/) {
    static const std::map<std::string, CPageFile> FILES{
        {"/", {"text/html; charset=utf-8", PAGE_HTML}},
        {"/style.css", {"text/css; charset=utf-8", PAGE_STYLE}},
        {"/page.js", {PSZ_SCRIPT, PAGE_SCRIPT}},
        {"/parts.js", {PSZ_SCRIPT, PAGE_PARTS}},
        {"/service.js", {PSZ_SCRIPT, PAGE_SERVICE}},
        {"/icon.svg", {"image/svg+xml", PAGE_ICON}},
    };
    const CPageFile& file = FILES.at(asked.route.pszPath);
    CHttpReply reply;
    reply.pszType = file.pszType;
    reply.pBody = file.pText;
    // Nothing comes from elsewhere, and no other page shows this one within its own.
    reply.headers = {
        {"Content-Security-Policy",
         "default-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
        {"X-Content-Type-Options", "nosniff"},
        {"Referrer-Policy", "no-referrer"},
    };
    return reply;
}
