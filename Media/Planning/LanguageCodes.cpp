#include "Media/Planning/LanguageCodes.h"

#include "Media/Text.h"

namespace Zelnor::Media
{

namespace
{

/// The codes of a language that ISO 639-2 has two for.
struct LanguageCodes
{
    const char* terms;    ///< ISO 639-2/T
    const char* catalogs; ///< ISO 639-2/B
};
constexpr LanguageCodes kLanguages[] = {
    {"bod", "tib"}, {"ces", "cze"}, {"cym", "wel"}, {"deu", "ger"}, {"ell", "gre"},
    {"eus", "baq"}, {"fas", "per"}, {"fra", "fre"}, {"hye", "arm"}, {"isl", "ice"},
    {"kat", "geo"}, {"mkd", "mac"}, {"mri", "mao"}, {"msa", "may"}, {"mya", "bur"},
    {"nld", "dut"}, {"ron", "rum"}, {"slk", "slo"}, {"sqi", "alb"}, {"zho", "chi"},
};

} // namespace

bool IsSameLanguage(const std::string& one, const std::string& other)
{
    const std::string first = LowerCase(one);
    const std::string second = LowerCase(other);
    return first == second || (!second.empty() && OtherLanguageCode(first) == second);
}

std::string OtherLanguageCode(const std::string& code)
{
    for (const LanguageCodes& row : kLanguages)
    {
        if (code == row.terms || code == row.catalogs)
        {
            return code == row.terms ? row.catalogs : row.terms;
        }
    }
    return "";
}

} // namespace Zelnor::Media
