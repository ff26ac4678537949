#include "files/text_file.h"

#include "files/target_file.h"
#include "files/write_all.h"

namespace orbel {

void writeTextFile(const std::string& file, const std::string& text, bool replace, mode_t permissions) {
  TargetFile target(file, replace, permissions);
  writeAll(target.descriptor(), text.data(), text.size(), file);
  target.replace();
}

}  // namespace orbel
