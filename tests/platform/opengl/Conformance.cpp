// The table of scenes on both devices: the reference device against its kept pictures, the hardware device against it.
#include "platform/opengl/ContactSheet.h"
#include "platform/opengl/Table.h"
#include "support/Golden.h"

#include <cstdlib>
#include <sstream>

namespace ql::test {

std::vector<Group> conformanceTable() {
  return {stageOperations(), stageArguments(), blending(),       comparisons(), primitives(),    narrowTargets(),
          addressing(),      filtering(),      textureFormats(), coordinates(), drawnTextures(), fog(),
          lights(),          materials(),      sprites()};
}

namespace {

std::vector<std::uint32_t> referencePicture(const Row& row) {
  Scene s(kSceneWidth, kSceneHeight, row.format);
  row.draw(s);
  return s.pixels();
}
std::vector<std::uint32_t> hardwarePicture(const Row& row) {
  Scene s(hardware(), kSceneWidth, kSceneHeight, row.format);
  row.draw(s);
  std::vector<std::uint32_t> pixels = s.pixels();
  hardware()->destroyTarget(s.target);
  return pixels;
}

TEST(Conformance, TheReferenceDeviceDrawsItsKeptPictures) {
  for (const Group& group : conformanceTable()) {
    ContactSheet sheet(8, 1, group.rows.size());
    for (const Row& row : group.rows) sheet.add({referencePicture(row)});
    EXPECT_TRUE(matchesGolden(sheet.image(), "conformance-" + group.id)) << group.title;
  }
}

TEST_F(OpenGL, TheHardwareDeviceDrawsTheTable) {
  for (const Group& group : conformanceTable())
    for (const Row& row : group.rows) {
      const Comparison c = compare(referencePicture(row), hardwarePicture(row), kSceneWidth, row.limit);
      EXPECT_LE(c.faults, row.faults) << group.title << ": " << row.name << ": " << c;
      EXPECT_LE(c.edges, row.edges) << group.title << ": " << row.name << ": " << c;
    }
}

TEST_F(OpenGL, EveryPairOfBlendFactors) {
  for (std::uint32_t source = 1; source <= 13; ++source)
    for (std::uint32_t destination = 1; destination <= 11; ++destination) {
      const Comparison c = onBoth(
          [=](Scene& s) {
            s.state.render.alphaBlendEnable = 1;
            s.state.render.srcBlend = source;
            s.state.render.destBlend = destination;
            background(s);
            s.draw(PrimitiveType::TriangleFan, quad());
          },
          2);
      EXPECT_EQ(c.faults, 0u) << source << ", " << destination << ": " << c;
    }
}

std::vector<std::uint32_t> differencePicture(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b) {
  std::vector<std::uint32_t> out;
  for (std::size_t i = 0; i < a.size(); ++i)
    out.push_back(0xFF000000 | std::min(channelDifference(a[i], b[i]) * 16, 255u) * 0x10101);
  return out;
}

// Writes docs/conformance.md and its pictures when QL_WRITE_CONFORMANCE names the folder docs.
TEST_F(OpenGL, ConformancePages) {
  const char* folder = std::getenv("QL_WRITE_CONFORMANCE");
  if (folder == nullptr) GTEST_SKIP() << "QL_WRITE_CONFORMANCE is not set";
  std::ostringstream summary, pages;
  summary << "| scenes | | largest difference inside | pixels on edges beyond the limit |\n|---|---:|---:|---:|\n";
  for (const Group& group : conformanceTable()) {
    ContactSheet sheet(4, 3, group.rows.size());
    std::ostringstream table;
    table << "\n| | scene | limit | inside | edges |\n|---:|---|---:|---:|---:|\n";
    int worst = 0;
    std::size_t number = 0, edges = 0;
    for (const Row& row : group.rows) {
      const std::vector<std::uint32_t> reference = referencePicture(row), gl = hardwarePicture(row);
      const Comparison c = compare(reference, gl, kSceneWidth, row.limit);
      sheet.add({reference, gl, differencePicture(reference, gl)});
      table << "| " << ++number << " | " << row.name << " | " << row.limit << " | "
            << (c.faults == 0 ? std::to_string(c.worstInside) : std::to_string(c.faults) + " pixels beyond") << " | "
            << c.edges << " |\n";
      if (c.faults == 0) worst = std::max(worst, c.worstInside);
      edges = std::max(edges, c.edges);
    }
    writeBytes(std::filesystem::path(folder) / "pictures" / ("conformance-" + group.id + ".jpg"), sheet.jpg());
    std::string anchor;
    for (const char c : group.title)
      if (c == ' ')
        anchor += '-';
      else if (std::isalnum(static_cast<unsigned char>(c)))
        anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    summary << "| [" << group.title << "](conformance.md#" << anchor << ") | " << number << " | " << worst << " | "
            << edges << " |\n";
    pages << "\n## " << group.title << "\n\n";
    if (!group.note.empty()) pages << group.note << "\n\n";
    pages << "![" << group.title << "](pictures/conformance-" << group.id << ".jpg)\n" << table.str();
  }
  std::ofstream(std::filesystem::path(folder) / "conformance.md")
      << "# Conformance\n\nWritten by `QL_WRITE_CONFORMANCE=docs test_platform_opengl --gtest_filter=*Pages`.\n\n"
         "Every value of every state that the engine uses, drawn by both devices. In the pictures, each scene is shown "
         "three times: by the\nreference device, by the hardware device (Mesa's llvmpipe), and the difference times "
         "16. "
         "Limits are steps of 255 in areas; on edges, a\npixel may take its neighbours' colours.\n\n"
      << summary.str() << pages.str();
}

}  // namespace
}  // namespace ql::test
