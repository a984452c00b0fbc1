/// @file
/// Meshes.
#ifndef QUASARLENS3D_MESH8_H
#define QUASARLENS3D_MESH8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Shader8.h>
#include <Quasarlens3D/Texture8.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quasarlens3D {

namespace Detail {
struct MeshHandleObject;
}

/// Which of a mesh's vertex lists is drawn.
enum CONST_QL_VERTEXTYPE : std::int32_t {
  QL_NORMAL_VERTEX = 530,   ///< vertices with normals, which lights light
  QL_NON_LIT_VERTEX = 530,  ///< the same
  QL_COLOR_VERTEX = 706     ///< vertices with colours of their own
};

/// How vertices make triangles.
enum CONST_QL_PRIMITIVETYPE : std::int32_t {
  QL_TRIANGLELIST = 4,  ///< three by three
  QL_TRIANGLESTRIP = 5  ///< each with the two before it
};

/// Which sides of triangles are not drawn.
enum CONST_QL_CULLING : std::int32_t {
  QL_DOUBLESIDED = 1,  ///< none: both sides are drawn
  QL_BACK_CULL = 2,    ///< those whose corners go clockwise on the screen
  QL_FRONT_CULL = 3    ///< those whose corners go counter-clockwise
};

/// How a group's pixels meet what stands there already.
enum CONST_QL_BLENDINGMODE : std::int32_t {
  QL_BLEND_NO = 0,     ///< by the texture's alpha, as with QL_BLEND_ALPHA: opaque pictures cover
  QL_BLEND_ALPHA = 1,  ///< by alpha
  QL_BLEND_ADD = 2,    ///< added
  QL_BLEND_COLOR = 3   ///< added, each colour times itself
};

/// What of a mesh a ray is tested against.
enum CONST_QL_TESTTYPE : std::int32_t {
  QL_TESTTYPE_BOUNDINGBOX = 1,
  QL_TESTTYPE_BOUNDINGSPHERE = 2,
  QL_TESTTYPE_ACCURATETESTING = 3,  ///< its triangles
  QL_TESTTYPE_MDL_HITBOXES = 4      ///< of actors; no mesh is hit
};

/// A mesh: vertices cut into groups, each group with its own texture, material, lightmap, blending and shader, placed
/// in the world by a position, a rotation and a scale. Meshes are handed out by the engine (Scene8.CreateMeshBuilder,
/// CreateChild, ...) and live in numbered slots; a mesh lives as long as a handle to it does, so keep one.
///
/// Vertices are numbered from 0; a mesh holds at most 32767. Groups are numbered from 1, and a new mesh has group 1,
/// empty; a group is a run of consecutive vertices, so finish one before opening the next. The current group, which new
/// vertices join, belongs to the mesh: every handle to it sees the same.
///
/// Every operation throws Error 91 on nothing.
class QUASARLENS3D_API Mesh8 : public Detail::Handle<Detail::MeshHandleObject> {
 public:
  /// Nothing.
  Mesh8() noexcept;
  Mesh8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Whether two handles are the same mesh's, or both nothing.
  friend QUASARLENS3D_API bool operator==(const Mesh8& a, const Mesh8& b) noexcept;
  friend QUASARLENS3D_API bool operator!=(const Mesh8& a, const Mesh8& b) noexcept;

  // ---------------------------------------------------------------------------------------------------- Building

  /// Appends a vertex to the current group. Both texture coordinate pairs become (tu, tv).
  /// @param x,y,z the mesh's own space @param color packed ARGB, shown by QL_COLOR_VERTEX @param nx,ny,nz the normal
  /// @param UseTLVertex no effect @return the number of vertices: one more than the new vertex's number
  /// @throws Error 6 beyond 32767 vertices, or for a number that is too large; 9 when the current group is gone
  std::int16_t AddVertex(double x, double y, double z, double color, float tu, float tv, float nx = 0, float ny = 0,
                         float nz = 1.0f, Boolean UseTLVertex = False);
  /// Opens a new group after the last one and makes it current. @param Texture nothing: none
  /// @param lightmap whether the group wants a lightmap @throws Error 6 beyond 32767 groups
  void AddFace(const Texture8& Texture, Boolean lightmap);
  /// Makes a group current. The last group but one, the last one and any number beyond: the list of groups is cut or
  /// enlarged to end with this group, which becomes empty and starts after the last vertex.
  /// @throws Error 9 below 0
  void SetGroupPointer(std::int16_t Group);

  /// A vertical rectangle in a group of its own, which wants a lightmap; the mesh becomes a strip. World units before
  /// scaling. @param Altitude its lower edge @param TileW,TileH how often the texture repeats: the texture's u goes
  /// along the wall TileH times, its v upwards TileW times; the outermost 2 % of the texture are left out
  /// @throws Error 6 beyond 32767 vertices or groups (the five operations below too)
  void AddWall(const Texture8& Texture, float x1, float z1, float X2, float z2, float height, float Altitude = 0,
               float TileW = 1.0f, float TileH = 1.0f);
  /// A wall whose ends differ; its vertices have no normal and the mesh's primitive type stays.
  void AddWall2(const Texture8& Texture, float x1, float z1, float X2, float z2, float height1, float height2,
                float Altitude1 = 0, float Altitude2 = 0, float TileW = 1.0f, float TileH = 1.0f);
  /// A horizontal rectangle between two corners; the mesh becomes a strip.
  void AddFloor(const Texture8& Texture, float x1, float z1, float X2, float z2, float Altitude = 0, float TileW = 1.0f,
                float TileH = 1.0f);
  /// A triangle; the mesh's primitive type stays.
  void AddTriangle(const Texture8& Texture, float x1, float y1, float z1, float X2, float y2, float z2, float X3,
                   float Y3, float Z3, float TileW = 1.0f, float TileH = 1.0f);
  /// A piece of four points in the order of a strip (1-2-3, 2-3-4); the mesh becomes a strip.
  void AddFaceFromPoint(const Texture8& Texture, float x1, float y1, float z1, float X2, float y2, float z2, float X3,
                        float Y3, float Z3, float X4, float Y4, float Z4, float TileW = 1.0f, float TileH = 1.0f);

  /// The mesh becomes a sphere about its origin, with the texture around it, poles up and down. This shape and the two
  /// below are drawn by RenderGroupRange and Render like any mesh, but have no vertices to move or to hit accurately.
  /// @param Slice,Stack pieces around and from pole to pole, from 2 @param color no effect
  /// @throws Error 91 before Quasarlens8.Initialize (the shapes below too), 6 for more than 32767 vertices, 0x8876086C
  /// for a Radius below 0 or fewer than 2 pieces
  void CreateSphere(const Texture8& Texture, float Radius, std::int32_t Slice, std::int32_t Stack,
                    std::int32_t color = -1);
  /// The mesh becomes a teapot, 3.2 units long, scaled by 4, its spout along +x.
  void CreateTeapot();
  /// The mesh becomes solid letters, scaled by 4: 100 units per em before that, 40 deep, the baseline along x from the
  /// origin, the front facing -z. Line breaks are honoured. @param UserFont a font made by Screen8.CreateUserFont; ""
  /// and unknown names: the engine's own @throws Error 0x8876086C for a text that shows nothing
  void Create3DText(const std::string& Text, const std::string& UserFont = "");
  /// Adds the triangles of a text file to the mesh's first group: a line that is ignored, the number of triangles, then
  /// for each vertex eight lines: x, y, z, nx, ny, nz, tu, tv. On an error the mesh stays as it was.
  /// @throws Error 53 without such a file, 62 when it ends early, 6 beyond 32767 vertices
  void LoadDXE(const std::string& Filename);

  /// Moves the vertex of that number, as MoveVertexInFace does.
  void MoveVertex(std::int16_t Vertex, float x, float y, float z, Boolean relative = False);
  /// Moves a vertex. Bounds and normals stay as they are. @param Vertex counted from the group's first vertex
  /// @param relative adds to its place @throws Error 9 for a group or vertex that does not exist
  void MoveVertexInFace(std::int16_t Vertex, std::int16_t facegroup, float x, float y, float z,
                        Boolean relative = False);
  /// Colours a vertex, or with -1 all; shown by QL_COLOR_VERTEX. @param color packed ARGB
  /// @throws Error 9 for a vertex that does not exist
  void SetColor(std::int32_t color, std::int32_t Vertex = -1);

  /// Flat normals: each triangle of a list its own; a group of a strip that of its first triangle. Shapes and files
  /// with shared vertices get smooth ones. @throws Error 91 when a shape could not be made
  void ComputeNormals();
  /// Bounding sphere and box in the mesh's own space, scaled; the origin counts as one of the points (not for shapes).
  /// They stay as they are when vertices or the scale change. Without vertices nothing happens.
  void ComputeSphere();
  /// Checks that the device could hold the mesh with shared vertices; the mesh stays as it is.
  /// @throws Error 91 before Quasarlens8.Initialize
  void Optimize();

  /// @param TypeV CONST_QL_VERTEXTYPE @throws Error 6 for a number beyond 16 bits (here and below)
  void SetVertexType(std::int32_t TypeV);
  /// @param Primitive CONST_QL_PRIMITIVETYPE
  void SetPrimitiveType(std::int32_t Primitive);
  /// @param Cull CONST_QL_CULLING; Render and the scene's drawing leave the culling as it is, RenderGroupRange sets it
  void SetCullMode(std::int32_t Cull);
  void SetMeshName(const std::string& MeshName);
  /// Whether the mesh is drawn.
  void Enable(Boolean OnOff);
  /// Disables the mesh when it has been drawn for so long; 0 never. The mesh keeps its slot.
  void SetDeathTime(float milliseconds);

  /// A new mesh that is a child of this one: drawn after it, its vertices passing through this mesh's matrix first,
  /// then through its own. Keep the handle. @param Name "" names it "Mesh" and its slot @throws Error 6 beyond 32767
  /// meshes
  Mesh8 CreateChild(const std::string& Name = "");
  /// Makes a mesh a child. @throws Error 5 for this mesh itself and for those above it, 6 beyond 32767 children
  void AddChild(const Mesh8& ChildMesh);
  /// Unlinks all children; they stay and are drawn by the scene.
  void DeleteChilds();

  // ----------------------------------------------------------------------------------- Placing, drawing, hitting

  /// World units; degrees about x, y and z, about z first, then x, then y; factors. The world matrix follows with the
  /// next drawing.
  void SetPosition(float x, float y, float z);
  void SetRotation(float x, float y, float z);
  void ScaleMesh(float x, float y, float z);
  Vec3 GetPosition() const;
  Vec3 GetRotation() const;
  /// Replaces the world matrix until the next SetPosition, SetRotation, ScaleMesh or MoveMesh.
  void SetMatrix(const Mat4& Matrix);
  /// The world matrix of the last drawing.
  Mat4 GetMatrix() const;

  /// @param x,y,z world units per second @param Gravity taken from the y velocity per second
  void SetVelocity(float x, float y, float z, float Gravity = 0);
  /// Moves by the velocity for the last frame's time. @param Speed a factor; gravity does not follow it
  /// @param CheckCollision tests the way with Scene8.Collide first: a hit stops the mesh where it is, its velocity 0
  void MoveMesh(float Speed = 1.0f, Boolean CheckCollision = False);
  /// Mirrors the texture on the first four vertices, which stand as AddWall places them.
  /// @throws Error 9 for a mesh of fewer than three vertices
  void FlipBillboard(Boolean LeftRight, Boolean TopBottom);

  /// The five below: a group of that number, or all for -1. A number that no group has changes nothing.
  /// @param Texture nothing: none
  void SetTexture(const Texture8& Texture, float Group = -1.0f);
  /// @param MaterialIndex see MaterialFactory8; 0: the white material
  void SetMaterial(std::int16_t MaterialIndex, float Group = -1.0f);
  /// @param Shader nothing: none
  void SetShader(const Shader8& Shader, std::int16_t Group = -1);
  /// @param Blending CONST_QL_BLENDINGMODE; other values keep the device's blending @throws Error 6 beyond 16 bits
  void SetBlendingMode(std::int32_t Blending = QL_BLEND_NO, std::int32_t Groups = -1);
  /// Shows the texture as a reflection of a sphere of surroundings. @param Mode 0: by the view's reflection, else by
  /// the normal alone
  void EnableSphereMapping(Boolean OnOff, std::int32_t Mode = 0);

  /// Draws all groups, by their shaders or blending, then the children as RenderGroupRange does. Nothing is drawn when
  /// the mesh is disabled, has no vertices, or has bounds (ComputeSphere) that are out of the view of the last frame by
  /// more than 30 world units. The device keeps the states that were set: blending, alpha test, lighting, culling, the
  /// world transform.
  /// @throws Error 91 before Quasarlens8.Initialize, the device's invalid call (0x8876086C) outside a frame
  void Render();
  /// Draws a run of groups with this mesh's culling and with light maps, without shaders and blending. A death time
  /// runs down with every call. @param EndGroup 0: the last group @throws as Render; Error 9 for a group that does not
  /// exist
  void RenderGroupRange(std::int32_t StartGroup, std::int32_t EndGroup);
  /// 1 when the last drawing found the mesh in view, else 0.
  std::int16_t IsVisible() const;

  /// Whether a ray meets the mesh where it was drawn last. Boxes and spheres are met at any distance; triangles (every
  /// three consecutive vertices of a group) up to the collision precision (Scene8.SetCollisionPrecision), and the first
  /// one that is met, in order of vertices, gives the last hit: see CollisionResult8. Spheres, teapots, text and X
  /// files have no triangles to meet.
  /// @param Origin world coordinates @param EndPos gives the direction only @param CheckType CONST_QL_TESTTYPE
  Boolean Collision(const Vec3& Origin, const Vec3& EndPos, std::int32_t CheckType = QL_TESTTYPE_ACCURATETESTING) const;

  // ------------------------------------------------------------------------------------------------------- Files

  /// Reads a DirectX X file: text, binary or compressed. All its meshes become one shape, each moved by its frames, in
  /// place of what the mesh held; group k + 1 stands for the file's material k, with a material of its own in the
  /// material table. @param Filename the folder in which textures are looked for that do not exist as they are named
  /// @throws Error 53 for a missing file, with the device's code (0x88760B59) for a damaged one or one without
  /// triangles, 6 beyond 32767 materials; the mesh stays as it was then
  void LoadXFile(const std::string& Filename);
  /// Reads a 3D Studio file: every object becomes a group, every triangle three vertices; the mesh becomes a triangle
  /// list. Objects get the texture and colours of their material, whose picture lies beside the file. Positions stay as
  /// they are stored, in most files z up. Errors are logged, not thrown: what could be read is kept, up to 32767
  /// vertices. @param Filename taken from the open PAK archive when it is not on disk; then the extracted file's name
  /// is written
  void Load3DsMesh(ByRef<std::string> Filename);
  /// Writes the mesh as chunks: name, place, bounding sphere, the vertex list that is drawn, groups. A longer file is
  /// not cut. Shapes are written without their geometry; the primitive type is not kept.
  /// @param TexDesc the groups' lightmaps, materials and textures too, by their numbers, with the names of the textures
  /// @throws Error 76 for a missing folder, 75 when the file cannot be written; the old file stays then
  void SaveToQLO(const std::string& Filename, Boolean TexDesc = False);
  /// Reads what SaveToQLO wrote; the bounding sphere is computed anew on demand. Another kind of file is logged and
  /// changes nothing. @throws Error 53 for a missing file, 62 or 5 for a damaged one, 6 for more than 32767 vertices;
  /// the mesh stays as it was then
  void LoadFromQLO(const std::string& Filename);
  /// Writes every field of the mesh, a longer file is not cut. @throws Error 76 for a missing folder, 75 when the file
  /// cannot be written
  void SaveMesh(const std::string& Filename);
  /// Reads the name from what SaveMesh wrote: as many characters as the mesh's name has now. Another kind of file
  /// changes nothing. @throws Error 53 for a missing file, 62 for a short one
  void LoadMesh(const std::string& Filename);

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
