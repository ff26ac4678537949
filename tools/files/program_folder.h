// What comes with the program: beside it where it was built, elsewhere under the same prefix where it is installed.
#pragma once

#include <string>

namespace orbel {

// The file or folder `beside` in the program's own folder when it is there, else the path `installed` from that folder
// when that is there, else the first, for messages.
std::string programData(const std::string& beside, const std::string& installed);

}  // namespace orbel
