#include "host/import/FileResult.h"

#include <array>

namespace tnhost {

FileResult::State FileResult::stateOf(tnCADFileTypes::JobState state)
{
    // By the values of JobState.
    constexpr std::array<State, 4> states{State::Succeeded, State::Failed, State::Aborted,
                                          State::Incomplete};
    const auto position = static_cast<std::size_t>(state);
    return position < states.size() ? states[position] : State::Failed;
}

} // namespace tnhost
