// What the program ends with.
#pragma once

namespace orbel {

enum ExitCode { exitGood = 0, exitFileFailed = 1, exitUsage = 2, exitNoPlugin = 3, exitInterrupted = 130 };

}  // namespace orbel
