#include "text_file.h"

#include "target_file.h"
#include "write_all.h"

void writeTextFile(const std::string& file, const std::string& text, bool replace, mode_t permissions) {
  TargetFile target(file, replace, permissions);
  writeAll(target.descriptor(), text.data(), text.size(), file);
  target.replace();
}
