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

const char *FileResult::word(State state)
{
    // By the values of State.
    constexpr std::array<const char *, 6> words{
        QT_TRANSLATE_NOOP("FileResult", "Pending"),    QT_TRANSLATE_NOOP("FileResult", "Running"),
        QT_TRANSLATE_NOOP("FileResult", "Succeeded"),  QT_TRANSLATE_NOOP("FileResult", "Failed"),
        QT_TRANSLATE_NOOP("FileResult", "Incomplete"), QT_TRANSLATE_NOOP("FileResult", "Aborted")};
    return words.at(static_cast<std::size_t>(state));
}

} // namespace tnhost
