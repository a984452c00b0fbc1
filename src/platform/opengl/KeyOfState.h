/// @file
/// The shader key of a draw call.
#pragma once

#include "platform/opengl/DrawState.h"

namespace ql::opengl {

ShaderKey keyOf(const device::DrawPacket& packet, const DrawSurroundings& around);

/// Whether an operation of the stage reads an argument.
bool reads(const StageKey& stage, device::TextureArg arg);

}  // namespace ql::opengl
