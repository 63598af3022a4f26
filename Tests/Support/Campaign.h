#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>

#if defined(__SANITIZE_ADDRESS__)
#define ZELNOR_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZELNOR_ADDRESS_SANITIZER
#endif
#endif

namespace Zelnor::Testing
{

/// The number that an environment variable holds, and `otherwise` when it is not set.
/// \throws std::invalid_argument when it is set to anything but a number from 0 to 2^64 - 1: a campaign whose
/// size is misspelt must not pass as a quick one.
inline std::uint64_t NumberFromEnvironment(const char* variable, std::uint64_t otherwise)
{
    const char* const text = std::getenv(variable);
    if (text == nullptr)
    {
        return otherwise;
    }
    std::uint64_t number = 0;
    const char* const end = text + std::strlen(text);
    const auto [last, error] = std::from_chars(text, end, number);
    if (error != std::errc() || last != end)
    {
        throw std::invalid_argument(std::string(variable) + ": expected a number, found '" + text + "'");
    }
    return number;
}

/// How often a campaign tries: what ZELNOR_CAMPAIGN_RUNS says, and without it `quick`, which is little enough
/// for the tests of every change.
inline std::size_t CampaignRuns(std::size_t quick)
{
    const std::uint64_t runs = NumberFromEnvironment("ZELNOR_CAMPAIGN_RUNS", quick);
    if (runs == 0 || runs > std::numeric_limits<std::size_t>::max())
    {
        throw std::invalid_argument("ZELNOR_CAMPAIGN_RUNS: expected at least 1");
    }
    return static_cast<std::size_t>(runs);
}

/// What is quick of a campaign that computes: `quick`, and a fifth of it under the address sanitizer, where
/// it takes as long. A release tries them all; the sanitizer has the fuzzers as well.
constexpr std::size_t QuickRuns(std::size_t quick)
{
#ifdef ZELNOR_ADDRESS_SANITIZER
    constexpr std::size_t share = 5;
#else
    constexpr std::size_t share = 1;
#endif
    return quick < share ? 1 : quick / share;
}

/// Where a campaign's random numbers begin: what ZELNOR_CAMPAIGN_SEED says, and without it `otherwise`. A
/// campaign that finds something prints it, so that the same run can be had again.
inline std::uint64_t CampaignSeed(std::uint64_t otherwise)
{
    return NumberFromEnvironment("ZELNOR_CAMPAIGN_SEED", otherwise);
}

/// What a campaign has to say at its end: "100000 documents, 0 findings". `scripts/campaign` shows it.
inline void ReportFigures(const std::string& figures)
{
    std::printf("campaign: %s\n", figures.c_str());
    std::fflush(stdout);
}

} // namespace Zelnor::Testing
