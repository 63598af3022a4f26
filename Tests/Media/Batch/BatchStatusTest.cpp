#include "Media/Batch/BatchStatus.h"

#include <gmock/gmock.h>

#include <vector>

namespace
{

using namespace Zelnor::Media;
using testing::ElementsAre;
using testing::IsEmpty;

using State = BatchJobState;

const std::vector<State> kAll = {State::Refused,     State::Waiting, State::Running,
                                 State::Interrupted, State::Done,    State::Missing,
                                 State::Changed,     State::Failed,  State::Cancelled};

TEST(ChoosingJobs, TakesWhatIsNotDone) { EXPECT_THAT(ChooseJobs(kAll), ElementsAre(2, 4, 8, 9)); }

TEST(ChoosingJobs, TakesWhatIsMissingOrChangedWhenToldSo)
{
    EXPECT_THAT(ChooseJobs(kAll, {true, false}), ElementsAre(2, 4, 6, 8, 9));
    EXPECT_THAT(ChooseJobs(kAll, {true, true}), ElementsAre(2, 4, 6, 7, 8, 9));
    EXPECT_THAT(ChooseJobs({}), IsEmpty());
}

TEST(BatchStatus, CountsStates)
{
    BatchStatus status;
    for (const State state : {State::Done, State::Refused, State::Done})
    {
        status.jobs.push_back({state});
    }
    EXPECT_EQ(status.CountOf(State::Done), 2U);
    EXPECT_TRUE(status.IsDone());
    status.jobs.push_back({State::Missing});
    EXPECT_FALSE(status.IsDone());
}

TEST(BatchStatus, NamesStatesForScripts)
{
    std::vector<std::string> names;
    for (const State state : kAll)
    {
        names.push_back(NameOf(state));
    }
    EXPECT_THAT(names, ElementsAre("refused", "waiting", "running", "interrupted", "done", "missing",
                                   "changed", "failed", "cancelled"));
}

} // namespace
