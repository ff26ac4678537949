#include "text_file.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "failure.h"
#include "target_file.h"

void writeTextFile(const std::string& file, const std::string& text, bool replace) {
  TargetFile target(file, replace);
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t count = write(target.descriptor(), text.data() + done, text.size() - done);
    if (count < 0) throw Failure(file, std::generic_category().message(errno));
    done += static_cast<std::size_t>(count);
  }
  target.replace();
}
