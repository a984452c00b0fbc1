#include "api/Meshes.h"
#include "mesh/LoadThreeDs.h"
#include "mesh/LoadXFile.h"
#include "mesh/MeshFile.h"

#include <Quasarlens3D/Mesh8.h>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using Detail::MeshHandleObject;

void Mesh8::LoadXFile(const std::string& Filename) {
  call(*this, [&](MeshHandleObject& self) { mesh::loadXFile(*self.context, *self.handle, Filename); });
}
void Mesh8::Load3DsMesh(ByRef<std::string> Filename) {
  call(*this, [&](MeshHandleObject& self) { mesh::loadThreeDs(*self.context, *self.handle, *Filename); });
}
void Mesh8::SaveToQLO(const std::string& Filename, Boolean TexDesc) {
  call(*this, [&](MeshHandleObject& self) { mesh::saveChunks(*self.context, *self.handle, Filename, TexDesc); });
}
void Mesh8::LoadFromQLO(const std::string& Filename) {
  call(*this, [&](MeshHandleObject& self) { mesh::loadChunks(*self.context, *self.handle, Filename); });
}
void Mesh8::SaveMesh(const std::string& Filename) {
  call(*this, [&](MeshHandleObject& self) { mesh::saveDump(*self.context, *self.handle, Filename); });
}
void Mesh8::LoadMesh(const std::string& Filename) {
  call(*this, [&](MeshHandleObject& self) { mesh::loadDump(*self.context, *self.handle, Filename); });
}

}  // namespace Quasarlens3D
