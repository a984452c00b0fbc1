/// @file
/// Texture coordinates of some vertices. @see TextureCoordinates.h
#if defined(QL_TEXTURE_COORDINATES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_TEXTURE_COORDINATES_INL_H
#undef QL_TEXTURE_COORDINATES_INL_H
#else
#define QL_TEXTURE_COORDINATES_INL_H
#endif

#include "platform/software/VertexLoads-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

/// Computes a stage's coordinates into the batch's attributes. A set's pairs are transformed as (u, v, 1, 0), so that
/// the matrix's third row moves them; generated triples as (x, y, z, 1).
struct Quadruples {
  Lanes<float> c[4];
};

inline void loadPairs(const VertexBatch& batch, std::int32_t offset, Lanes<float>& u, Lanes<float>& v) {
#if HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
  loadTwos(batch.source.data(), offset, u.v, v.v);
#else
  for (int i = 0; i < kLanes; ++i) {
    float pair[2];
    std::memcpy(pair, batch.source[static_cast<std::size_t>(i)] + offset, sizeof pair);
    u[i] = pair[0];
    v[i] = pair[1];
  }
#endif
}

inline void generate(CoordinateSource::Kind kind, const VertexBatch& batch, Quadruples& out) {
  if (kind == CoordinateSource::Kind::Reflection) {
    const Vectors &n = batch.normal, &e = batch.toEye;
    Lanes<float> twice;
    dot(n, e, twice);
    for (int i = 0; i < kLanes; ++i) {
      twice[i] *= 2;
      out.c[0][i] = twice[i] * n.x[i] - e.x[i];
      out.c[1][i] = twice[i] * n.y[i] - e.y[i];
      out.c[2][i] = twice[i] * n.z[i] - e.z[i];
    }
  } else {
    const Vectors& from = kind == CoordinateSource::Kind::Normal ? batch.normal : batch.seen;
    out.c[0] = from.x;
    out.c[1] = from.y;
    out.c[2] = from.z;
  }
  fill(out.c[3], 1);
}

// Row vectors times the matrix, one column of it at a time.
inline void transformQuadruples(const Quadruples& in, float m1, float m2, float m3, float m4, Lanes<float>& out) {
  for (int i = 0; i < kLanes; ++i) out[i] = in.c[0][i] * m1 + in.c[1][i] * m2 + in.c[2][i] * m3 + in.c[3][i] * m4;
}

/// Computes a stage's coordinates into the batch's attributes. A set's pairs are transformed as (u, v, 1, 0), so that
/// the matrix's third row moves them; generated triples as (x, y, z, 1).
inline void textureCoordinates(const Pipeline& p, std::size_t stage, VertexBatch& batch) {
  const CoordinateSource& source = p.coordinates[stage];
  const std::int32_t offset = p.layout.coordinates[stage];
  Lanes<float>* out = batch.attributes + p.attributes.uv[stage];
  if (source.kind == CoordinateSource::Kind::Vertex && source.transformed == 0) {
    if (offset >= 0) {
      loadPairs(batch, offset, out[0], out[1]);
    } else {
      fill(out[0], 0);
      fill(out[1], 0);
    }
    return;
  }
  Quadruples in;
  if (source.kind == CoordinateSource::Kind::Vertex) {
    loadPairs(batch, offset, in.c[0], in.c[1]);
    fill(in.c[2], 1);
    fill(in.c[3], 0);
  } else {
    generate(source.kind, batch, in);
  }
  if (source.transformed == 0) {
    out[0] = in.c[0];
    out[1] = in.c[1];
    return;
  }
  const math::Mat4& m = source.matrix;
  transformQuadruples(in, m.m11, m.m21, m.m31, m.m41, out[0]);
  if (source.transformed == 1)
    fill(out[1], 0);
  else
    transformQuadruples(in, m.m12, m.m22, m.m32, m.m42, out[1]);
  if (!source.projected) return;
  Lanes<float>& divisor = batch.attributes[p.attributes.divisor[stage]];
  if (source.transformed == 2)
    divisor = out[1];
  else if (source.transformed == 3)
    transformQuadruples(in, m.m13, m.m23, m.m33, m.m43, divisor);
  else
    transformQuadruples(in, m.m14, m.m24, m.m34, m.m44, divisor);
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
