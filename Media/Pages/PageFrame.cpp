#include "Media/Pages/PageFrame.h"

#include "Media/Pages/HtmlText.h"

namespace Zelnor::Media
{

std::string MakePage(const Page& page)
{
    const std::string policy = std::string("default-src 'none'; style-src '") + kPageStyle.hash +
                               "'; script-src '" + page.script->hash +
                               "'; base-uri 'none'; form-action 'none'";
    return "<!DOCTYPE html>\n"
           "<html lang=\"en\" xmlns=\"http://www.w3.org/1999/xhtml\">\n"
           "<head>\n"
           "<meta charset=\"utf-8\"/>\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"" +
           policy +
           "\"/>\n"
           "<meta name=\"referrer\" content=\"no-referrer\"/>\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
           "<title>" +
           HtmlText(page.title) + "</title>\n<style>" + kPageStyle.text +
           "</style>\n</head>\n<body>\n<main>\n" + page.main + "</main>\n<script>" + page.script->text +
           "</script>\n</body>\n</html>\n";
}

} // namespace Zelnor::Media
