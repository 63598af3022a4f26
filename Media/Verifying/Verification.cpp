#include "Media/Verifying/Verification.h"

namespace Zelnor::Media
{

VerificationFailed::~VerificationFailed() noexcept = default;

std::string TargetDifference::Sentence() const
{
    const std::string where = place.TextInDocument();
    return (where.empty() ? "" : where + ": ") + what + ": wanted " + wanted + ", found " + found;
}

} // namespace Zelnor::Media
