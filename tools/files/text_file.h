// Small text files, written whole or not at all.
#pragma once

#include <sys/types.h>

#include <string>

namespace orbel {

// A new file gets those of the permissions that the umask leaves. Throws Failure when the file is there already, unless
// it may be replaced, and when it can't be written.
void writeTextFile(const std::string& file, const std::string& text, bool replace, mode_t permissions = 0666);

}  // namespace orbel
