/// @file
/// Recorded sessions: what the user did in a window, to be drawn again.
#pragma once

#include "Options.h"
#include "Picture.h"

#include <Quasarlens3D/InternalObjects8.h>

#include <cstdint>

namespace walk {

/// Takes what a session was recorded with from its file, where the command line says nothing else.
/// @throws Failure Unreadable, Malformed
void applySession(Options& options);
/// Starts the recording or the replay that the options ask for, if any. @throws Failure Unreadable, Malformed
void startSession(Quasarlens3D::InternalObjects8& internals, const Options& options);
/// Ends it. @throws Failure Unreadable when the recording is not complete on disk
void finishSession(Quasarlens3D::InternalObjects8& internals, const Options& options);

/// A number that tells pictures apart, the same on every machine.
std::uint64_t hashOf(const Picture& picture);

}  // namespace walk
