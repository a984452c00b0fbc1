// Matrices against GLM. Its column-major matrices over column vectors have the memory of our row-major ones over row
// vectors; products read in the opposite order.
#define GLM_FORCE_RADIANS
#define GLM_ENABLE_EXPERIMENTAL
#include "math/Matrix.h"

#include <cstring>
#include <random>

#include <glm/ext/matrix_projection.hpp>
#include <glm/glm.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/quaternion.hpp>
#include <glm/gtx/euler_angles.hpp>
#include <gtest/gtest.h>

namespace ql::math {
namespace {

glm::mat4 toGlm(const Mat4& m) {
  glm::mat4 out;
  std::memcpy(&out[0][0], &m, sizeof m);
  return out;
}
glm::vec3 toGlm(const Vec3& v) { return {v.x, v.y, v.z}; }

void expectNear(const Mat4& ours, const glm::mat4& theirs, float tolerance, const char* what) {
  float a[16], b[16];
  std::memcpy(a, &ours, sizeof a);
  std::memcpy(b, &theirs, sizeof b);
  for (int i = 0; i < 16; ++i)
    EXPECT_NEAR(a[i], b[i], tolerance * std::max(1.0f, std::abs(b[i])))
        << what << ", element " << i / 4 + 1 << i % 4 + 1;
}
void expectNear(const Vec3& ours, const glm::vec3& theirs, float tolerance, const char* what) {
  EXPECT_NEAR(ours.x, theirs.x, tolerance) << what;
  EXPECT_NEAR(ours.y, theirs.y, tolerance) << what;
  EXPECT_NEAR(ours.z, theirs.z, tolerance) << what;
}

class Matrices : public testing::Test {
 protected:
  float number(float range) { return std::uniform_real_distribution<float>(-range, range)(random_); }
  Vec3 vector(float range) { return {number(range), number(range), number(range)}; }
  Mat4 matrix() {
    float values[16];
    for (float& value : values) value = number(3);
    Mat4 m;
    std::memcpy(&m, values, sizeof m);
    return m;
  }
  std::mt19937 random_{1};
};

TEST_F(Matrices, AgreeWithAnIndependentLibrary) {
  for (int round = 0; round < 50; ++round) {
    const Mat4 a = matrix(), b = matrix();
    expectNear(multiply(a, b), toGlm(b) * toGlm(a), 1e-5f, "product");
    expectNear(transpose(a), glm::transpose(toGlm(a)), 0, "transpose");
    if (std::abs(glm::determinant(toGlm(a))) > 0.5f) {
      expectNear(inverse(a), glm::mat4(glm::inverse(glm::dmat4(toGlm(a)))), 1e-5f, "inverse");
      expectNear(multiply(a, inverse(a)), glm::mat4(1), 1e-3f, "product with the inverse");
    }
    const float angle = number(7);
    expectNear(rotationX(angle), glm::rotate(glm::mat4(1), angle, {1, 0, 0}), 1e-6f, "rotation about x");
    expectNear(rotationY(angle), glm::rotate(glm::mat4(1), angle, {0, 1, 0}), 1e-6f, "rotation about y");
    expectNear(rotationZ(angle), glm::rotate(glm::mat4(1), angle, {0, 0, 1}), 1e-6f, "rotation about z");
    const float yaw = number(7), pitch = number(7), roll = number(7);
    expectNear(rotationYawPitchRoll(yaw, pitch, roll), glm::yawPitchRoll(yaw, pitch, roll), 2e-6f, "yaw, pitch, roll");

    const Vec3 v = vector(10);
    expectNear(multiply(scaling(v.x, v.y, v.z), translation(v.z, v.x, v.y)),
               glm::scale(glm::translate(glm::mat4(1), {v.z, v.x, v.y}), toGlm(v)), 1e-6f, "scale, then move");
    const glm::vec4 moved = toGlm(a) * glm::vec4(toGlm(v), 1), turned = toGlm(a) * glm::vec4(toGlm(v), 0);
    if (std::abs(moved.w) > 1) expectNear(transformPoint(v, a), glm::vec3(moved) / moved.w, 1e-3f, "point");
    expectNear(transformNormal(v, a), glm::vec3(turned), 1e-4f, "direction");
  }
}

TEST_F(Matrices, ViewAndProjectionAreLeftHandedWithDepthFromZero) {
  const Viewport viewport{10, 20, 640, 480, 0.25f, 0.75f};
  for (int round = 0; round < 50; ++round) {
    const Vec3 eye = vector(100), target = add(eye, {number(5), number(5), 20});
    const Mat4 view = lookAt(eye, target, {0, 1, 0});
    expectNear(view, glm::lookAtLH(toGlm(eye), toGlm(target), glm::vec3(0, 1, 0)), 2e-4f, "view");
    const Mat4 projection = perspective(1.0f, 0.75f, 0.5f, 2000);
    expectNear(projection, glm::perspectiveLH_ZO(1.0f, 4.0f / 3.0f, 0.5f, 2000.0f), 1e-6f, "projection");

    const Mat4 world = rotationY(number(3));
    const Vec3 p = transformPoint(add(target, vector(5)), inverse(world));
    const glm::vec3 theirs = glm::projectZO(toGlm(p), toGlm(view) * toGlm(world), toGlm(projection),
                                            glm::vec4(0, 0, viewport.width, viewport.height));
    const Vec3 ours = project(p, viewport, projection, view, world);
    expectNear(ours, {10 + theirs.x, 20 + 480 - theirs.y, 0.25f + 0.5f * theirs.z}, 0.02f, "screen point");
    expectNear(unproject(ours, viewport, projection, view, world), toGlm(p), 0.5f, "back from the screen");
  }
  EXPECT_FLOAT_EQ(transformPoint({0, 0, 0.5f}, perspective(1, 1, 0.5f, 100)).z, 0);
  EXPECT_NEAR(transformPoint({0, 0, 100}, perspective(1, 1, 0.5f, 100)).z, 1, 1e-6f);
}

TEST_F(Matrices, WithoutAnInverseGiveTheIdentity) {
  expectNear(inverse(scaling(1, 0, 1)), glm::mat4(1), 0, "flat");
  expectNear(inverse(Mat4{}), glm::mat4(1), 0, "zero");
  expectNear(inverse(scaling(1e-12f, 1e-12f, 1e-12f)), glm::scale(glm::mat4(1), glm::vec3(1e12f)), 1e-5f,
             "tiny, not flat");
}

TEST_F(Matrices, QuaternionsTurnAsTheirMatricesDo) {
  for (int round = 0; round < 200; ++round) {
    // Half turns and small angles reach every branch of the extraction.
    const Mat4 a = rotationYawPitchRoll(number(3.2f), number(3.2f), number(3.2f));
    const Mat4 b = multiply(round % 2 ? rotationX(3.1415926f) : rotationZ(number(0.001f)), a);
    const Quaternion qa = quaternionFromMatrix(a), qb = quaternionFromMatrix(b);
    expectNear(rotation(qa), toGlm(a), 2e-6f, "matrix of the quaternion");
    expectNear(rotation(qb), toGlm(b), 2e-6f, "matrix of the quaternion");

    const glm::quat ga(qa.w, qa.x, qa.y, qa.z), gb(qb.w, qb.x, qb.y, qb.z);
    if (std::abs(glm::dot(ga, gb)) < 1e-3f) continue;  // either arc is the shorter one
    const float t = std::abs(number(1));
    expectNear(rotation(slerp(qa, qb, t)), glm::mat4_cast(glm::slerp(ga, gb, t)), 1e-4f, "interpolated");
  }
}

}  // namespace
}  // namespace ql::math
