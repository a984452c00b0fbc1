#include "ScriptReport.h"

#include "platform/host/Files.h"
#include "render/shaders/ShaderScript.h"

#include <utility>

namespace ql::inspect {

using Json = nlohmann::ordered_json;

Json scriptReport(std::string_view script, bool validate) {
  std::size_t stages = 0;
  Json shaders = Json::array();
  for (const render::shaders::ScriptEntry& entry : render::shaders::indexScript(script)) {
    const render::shaders::ScriptShader shader = render::shaders::parseShaderBody(script, entry.body);
    stages += shader.stages.size();
    Json maps = Json::array();
    for (const render::shaders::ScriptStage& stage : shader.stages) {
      Json names = Json::array();
      for (const std::string& map : stage.maps) names.push_back(host::toUtf8(map));
      maps.push_back(std::move(names));
    }
    Json one{{"name", host::toUtf8(entry.name)}, {"stages", std::move(maps)}};
    if ((shader.surfaceFlags & render::shaders::kSky) != 0) one["sky"] = true;
    shaders.push_back(std::move(one));
  }
  Json json{{"format", "shader script"}, {"shaders", shaders.size()}, {"stages", stages}, {"list", std::move(shaders)}};
  if (validate) json["valid"] = true;
  return json;
}

}  // namespace ql::inspect
