#include "platform/host/MessageBox.h"

#include <cstdio>

namespace ql::host {

void messageToStandardError(const std::string& title, const std::string& text) {
  std::fprintf(stderr, "%s: %s\n", title.c_str(), text.c_str());
}

}  // namespace ql::host
