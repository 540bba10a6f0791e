#pragma once

/// The words of the conversation between a host and its converter processes: one JSON object on
/// each line, as docs/worker-protocol.md describes. Plain text, since the two sides read and write
/// JSON with different libraries.
namespace tnprotocol {

/// Counts up when an older host or worker could misunderstand a newer one; they have to be equal.
inline constexpr int version = 2;

/// The argument that makes the converter serve requests.
inline constexpr char workerOption[] = "--worker";

/// Stands behind the output's name while the file is being written.
inline constexpr char partialSuffix[] = ".part";

namespace command {
inline constexpr char convert[] = "convert";
inline constexpr char quit[] = "quit";
} // namespace command

namespace event {
inline constexpr char ready[] = "ready";
inline constexpr char started[] = "started";
inline constexpr char progress[] = "progress";
inline constexpr char part[] = "part";
inline constexpr char partFinished[] = "partFinished";
inline constexpr char reference[] = "reference";
inline constexpr char warning[] = "warning";
inline constexpr char finished[] = "finished";
} // namespace event

namespace state {
inline constexpr char success[] = "success";
inline constexpr char failure[] = "failure";
inline constexpr char incomplete[] = "incomplete";
} // namespace state

namespace key {
inline constexpr char command[] = "command";
inline constexpr char event[] = "event";
inline constexpr char file[] = "file";
inline constexpr char formats[] = "formats";
inline constexpr char id[] = "id";
inline constexpr char input[] = "input";
inline constexpr char message[] = "message";
inline constexpr char output[] = "output";
inline constexpr char percent[] = "percent";
inline constexpr char program[] = "program";
inline constexpr char seconds[] = "seconds";
inline constexpr char settings[] = "settings";
inline constexpr char sourceId[] = "sourceId";
inline constexpr char state[] = "state";
inline constexpr char threads[] = "threads";
inline constexpr char type[] = "type";
inline constexpr char version[] = "version";
} // namespace key

} // namespace tnprotocol
