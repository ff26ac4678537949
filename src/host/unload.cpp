// What the Windows module does as it is unloaded. The C++ runtime that is linked in keeps 72 kB for exceptions when
// memory is short, and doesn't give them back by itself: a host that unloads its filters would lose as much each time.
#if defined(__MINGW32__)

namespace __gnu_cxx {
void __freeres();  // NOLINT: the runtime's own name for it
}

namespace {

struct Unload {
  ~Unload() { __gnu_cxx::__freeres(); }
};
const Unload unload;

}  // namespace

#endif
