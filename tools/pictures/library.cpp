#include "pictures/library.h"

#include "pictures/errors.h"

namespace orbel {

namespace {

void silence(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

}  // namespace

ImageLibrary::ImageLibrary(const char* programName, bool verbose, int threads) {
  if (VIPS_INIT(programName) != 0) throw Failure("libvips", lastError());
  vips_concurrency_set(threads);
  if (!verbose) {
    g_log_set_default_handler(silence, nullptr);
    g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK | G_LOG_FLAG_FATAL | G_LOG_FLAG_RECURSION),
                      silence, nullptr);
  }
  // Nothing is computed twice here, and pictures are changed where they lie: no result may be remembered.
  vips_cache_set_max(0);
}

ImageLibrary::~ImageLibrary() { vips_shutdown(); }

}  // namespace orbel
