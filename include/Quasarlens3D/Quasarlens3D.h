/// @file
/// Everything.
#ifndef QUASARLENS3D_QUASARLENS3D_H
#define QUASARLENS3D_QUASARLENS3D_H

#include <Quasarlens3D/BSPTree8.h>
#include <Quasarlens3D/Camera8.h>
#include <Quasarlens3D/CollisionResult8.h>
#include <Quasarlens3D/Error.h>
#include <Quasarlens3D/Event.h>
#include <Quasarlens3D/ForceFeedEffect8.h>
#include <Quasarlens3D/ForceFeedEffects8.h>
#include <Quasarlens3D/GameController8.h>
#include <Quasarlens3D/GameControllers8.h>
#include <Quasarlens3D/Globals8.h>
#include <Quasarlens3D/GraphicEffect8.h>
#include <Quasarlens3D/InputEngine8.h>
#include <Quasarlens3D/InternalObjects8.h>
#include <Quasarlens3D/LightEngine8.h>
#include <Quasarlens3D/MaterialFactory8.h>
#include <Quasarlens3D/Mesh8.h>
#include <Quasarlens3D/MouseCursor8.h>
#include <Quasarlens3D/MouseCursors8.h>
#include <Quasarlens3D/Quasarlens8.h>
#include <Quasarlens3D/RenderSurface8.h>
#include <Quasarlens3D/Scene8.h>
#include <Quasarlens3D/Screen8.h>
#include <Quasarlens3D/Shader8.h>
#include <Quasarlens3D/Texture8.h>
#include <Quasarlens3D/TextureFactory8.h>
#include <Quasarlens3D/Types.h>

#endif
