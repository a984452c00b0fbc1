/// @file
/// Recording and replaying what the user does.
#pragma once

#include "engine/EngineContext.h"
#include "platform/host/Clock.h"

#include <cstdint>
#include <string>

namespace ql::input {

/// Writes from now on all input, the clock and the window's size to a file. A session in progress is ended first.
/// @param note a text of the host's own @return false, with a line in the log, when the file cannot be made
bool startRecording(engine::EngineContext& context, const std::string& fileName, const std::string& note);
/// Takes input, clock and the size of the engine's own window from a file from now on. A session in progress is ended
/// first. @return false, with a line in the log, when the file cannot be used
bool startReplay(engine::EngineContext& context, const std::string& fileName);
/// Ends either; devices and clock are the machine's again. @return whether a recording is on disk completely, or a
/// replay was whole; false without a session
bool stopSession(engine::EngineContext& context);
/// Whether a replay has no frame left; false without one.
bool replayEnded(engine::EngineContext& context);
/// The host's text of the session being replayed; empty without one.
std::string sessionNote(engine::EngineContext& context);
/// Called after every presented frame.
void endSessionFrame(engine::EngineContext& context);
/// Replaces the engine's clock; a recording goes on with it, a replay keeps its own.
void setClock(engine::EngineContext& context, host::TickSource ticks);

}  // namespace ql::input
