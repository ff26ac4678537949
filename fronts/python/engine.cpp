// The module orbel._engine: pictures in numpy's arrays, where they lie, to the front door. What people call stands in
// orbel/*.py.
#include <orbel.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <limits>
#include <memory>
#include <optional>
#include <string>

namespace py = pybind11;

namespace {

[[noreturn]] void raise(PyObject* type, const std::string& message) {
  PyErr_SetString(type, message.c_str());
  throw py::error_already_set();
}

// ---- Pictures -------------------------------------------------------------------------------------------------------

int samplesOf(const py::array& array, const std::string& name) {
  if (py::isinstance<py::array_t<std::uint8_t>>(array)) return ORBEL_UINT8;
  if (py::isinstance<py::array_t<std::uint16_t>>(array)) return ORBEL_UINT16;
  if (py::isinstance<py::array_t<float>>(array)) return ORBEL_FLOAT32;
  const py::object type = array.dtype();
  const py::object native = type.attr("newbyteorder")("=");
  const bool isSwapped = native.equal(py::dtype::of<std::uint16_t>()) || native.equal(py::dtype::of<float>());
  raise(PyExc_TypeError, name + ": holds " + py::str(type).cast<std::string>() +
                             "; taken are uint8 (white 255), uint16 (white 65535) and float32 (white 1), in the "
                             "machine's byte order: " +
                             name + ".astype('" + (isSwapped ? py::str(native).cast<std::string>() : "float32") +
                             "') makes such an array" + (isSwapped ? "" : ", to be scaled where its white isn't 1"));
}

// An extent that no int32_t holds is refused by the engine as the largest is.
std::int32_t extent(py::ssize_t size) {
  return static_cast<std::int32_t>(std::min<py::ssize_t>(size, std::numeric_limits<std::int32_t>::max()));
}

std::string shapeOf(const py::array& array) { return py::str(array.attr("shape")).cast<std::string>(); }

// H x W, H x W x 3 or H x W x 4; whether it can be written to, the caller knows. isBgr: blue comes first.
orbel_picture describe(const py::array& array, const std::string& name, bool isBgr = false) {
  orbel_picture picture{};
  picture.size = sizeof picture;
  picture.samples = samplesOf(array, name);
  const bool isColour = array.ndim() == 3 && (array.shape(2) == 3 || array.shape(2) == 4);
  if (array.ndim() != 2 && !isColour) {
    raise(PyExc_ValueError, name + ": its shape is " + shapeOf(array) + "; taken are (H, W), (H, W, 3) and (H, W, 4)");
  }
  picture.height = extent(array.shape(0));
  picture.width = extent(array.shape(1));
  picture.channels = isColour ? static_cast<std::int32_t>(array.shape(2)) : 1;
  picture.row_step = array.strides(0);
  picture.column_step = array.strides(1);
  auto* const first = static_cast<char*>(const_cast<void*>(array.data()));  // a source isn't written to
  for (int channel = 0; channel < picture.channels; ++channel) {
    const int place = isBgr && channel < 3 ? 2 - channel : channel;
    picture.base[channel] = isColour ? first + place * array.strides(2) : first;
  }
  return picture;
}

// ---- Calls ----------------------------------------------------------------------------------------------------------

double numberIn(const std::string& file) {
  double number = 0;
  std::ifstream(file) >> number;
  return number;
}

// What the system, and a container that bounds it, can still give, in bytes; as good as endless where they don't say.
double availableMemory() {
  double bytes = std::numeric_limits<double>::infinity();
  std::ifstream table("/proc/meminfo");
  for (std::string word; table >> word;) {
    if (word != "MemAvailable:") continue;
    if (table >> bytes) bytes *= 1024;
    break;
  }
  const std::string group = "/sys/fs/cgroup/memory.";
  if (const double most = numberIn(group + "max"); most > 0) {
    bytes = std::min(bytes, std::max(0.0, most - numberIn(group + "current")));
  }
  return bytes;
}

// f, which takes the interpreter's lock. A daemon's thread that asks for it while the interpreter ends is ended in its
// place, and unwinding that thread through frames such as these would end the process: it sleeps until all is over.
template <class F>
auto withoutUnwinding(F f) noexcept {
  try {
    return f();
  } catch (...) {
    for (;;) pause();
  }
}

// One call of the engine: its options, the look for signals, and its status as an exception.
class Call {
 public:
  Call(std::int32_t threads, const std::optional<py::array>& mask) {
    orbel_options_init(&options_, sizeof options_);
    options_.threads = threads;
    options_.progress = look;
    options_.context = this;
    options_.message = message_.data();
    options_.message_capacity = message_.size();
    if (mask) {
      mask_ = describe(*mask, "mask");
      options_.mask = &mask_;
    }
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  // The system grants more memory than it has, and ends a process that then uses it. need is the member of the plan
  // that the call goes by; newBytes are those of a result that nothing has been written to.
  void requireRoom(const orbel_settings& settings, const orbel_picture& picture, double orbel_plan::*need,
                   double newBytes) {
    orbel_plan plan{};
    orbel_plan_init(&plan, sizeof plan);
    if (orbel_plan_run(&settings, &picture, &options_, &plan) != ORBEL_OK) return;  // the call itself will say why
    const double bytes = plan.*need + newBytes;
    constexpr double little = 1 << 28;
    if (bytes <= little) return;
    if (const double available = availableMemory(); bytes > available) {
      const auto megabytes = [](double b) { return std::to_string(static_cast<long long>(b / 1e6)) + " MB"; };
      raise(PyExc_MemoryError, "the run takes " + megabytes(bytes) + " beside the picture, and " +
                                   megabytes(available) + " are free; with a reference_edge it takes far less");
    }
  }

  // f(options), other Python threads running meanwhile.
  template <class F>
  void run(F f) {
    PyThreadState* const thread = PyEval_SaveThread();
    const orbel_status status = f(&options_);  // throws nothing
    withoutUnwinding([&] { PyEval_RestoreThread(thread); });
    if (PyErr_Occurred() != nullptr) throw py::error_already_set();  // a signal's, even if the run was past stopping
    if (status == ORBEL_OK) return;
    const std::string text = message_[0] != '\0' ? message_.data() : orbel_status_text(status);
    raise(status == ORBEL_NO_MEMORY ? PyExc_MemoryError : PyExc_ValueError, text);
  }

 private:
  using Clock = std::chrono::steady_clock;

  static std::int32_t look(void* context, double /*done*/) noexcept {
    Call& call = *static_cast<Call*>(context);
    const Clock::time_point now = Clock::now();
    if (now < call.next_) return 0;  // the lock may be a while in coming
    call.next_ = now + std::chrono::milliseconds(50);
    const PyGILState_STATE lock = withoutUnwinding(PyGILState_Ensure);
    const bool isOver = PyErr_Occurred() != nullptr || PyErr_CheckSignals() != 0;
    PyGILState_Release(lock);
    return isOver ? 1 : 0;
  }

  orbel_options options_{};
  orbel_picture mask_{};
  std::array<char, 512> message_{};
  Clock::time_point next_ = Clock::now();
};

void equalize(const orbel_settings& settings, const py::array& image, const py::array& out,
              const std::optional<py::array>& mask, std::int32_t threads, bool isBgr, double newBytes) {
  const orbel_picture source = describe(image, "image", isBgr);
  const orbel_picture target = describe(out, "out", isBgr);
  Call call(threads, mask);
  call.requireRoom(settings, source, &orbel_plan::bytes, newBytes);
  call.run([&](const orbel_options* options) { return orbel_equalize(&settings, &source, &target, options); });
}

// ---- Settings and stacks --------------------------------------------------------------------------------------------

using Numbers = std::array<double, ORBEL_BANDS>;
using Flags = std::array<bool, ORBEL_BANDS>;

orbel_settings makeSettings(const Numbers& gain, const Numbers& radius, const Numbers& threshold, const Flags& edges,
                            double residual, double mix, bool half, bool luminance, std::int32_t overlay,
                            std::int32_t referenceEdge, std::int32_t form, bool limit) {
  orbel_settings settings{};
  orbel_settings_init(&settings, sizeof settings);
  for (std::size_t i = 0; i < ORBEL_BANDS; ++i) {
    settings.bands[i].gain = gain[i];
    settings.bands[i].radius = radius[i];
    settings.bands[i].threshold = threshold[i];
    settings.bands[i].edges = edges[i] ? 1 : 0;
  }
  settings.residual = residual;
  settings.mix = mix;
  settings.half = half ? 1 : 0;
  settings.luminance = luminance ? 1 : 0;
  settings.overlay = overlay;
  settings.reference_edge = referenceEdge;
  settings.form = form;
  settings.limit = limit ? 1 : 0;
  std::array<char, 512> message{};
  if (orbel_settings_check(&settings, message.data(), message.size()) != ORBEL_OK) {
    raise(PyExc_ValueError, message.data());
  }
  return settings;
}

class Stack {
 public:
  Stack(const orbel_settings& settings, const py::array& image, std::int32_t threads, bool isBgr) {
    const orbel_picture source = describe(image, "image", isBgr);
    Call call(threads, std::nullopt);
    call.requireRoom(settings, source, &orbel_plan::bytes, 0);
    orbel_stack* made = nullptr;
    // Taken over at once: a signal's exception may come though the stack was made.
    const auto create = [&](const orbel_options* options) {
      const orbel_status status = orbel_stack_create(&settings, &source, options, &made);
      stack_.reset(made);
      return status;
    };
    call.run(create);
  }

  void weigh(const orbel_settings& settings, const py::array& image, const py::array& out,
             const std::optional<py::array>& mask, std::int32_t threads, bool isBgr, double newBytes) const {
    const orbel_picture source = describe(image, "image", isBgr);
    const orbel_picture target = describe(out, "out", isBgr);
    Call call(threads, mask);
    call.requireRoom(settings, source, &orbel_plan::look_bytes, newBytes);
    call.run([&](const orbel_options* options) {
      return orbel_stack_weigh(stack_.get(), &settings, &source, &target, options);
    });
  }

  void band(const orbel_settings& settings, std::int32_t number, const py::array& image, const py::array& out,
            std::int32_t threads, bool isBgr, double newBytes) const {
    const orbel_picture source = describe(image, "image", isBgr);
    const orbel_picture target = describe(out, "out", isBgr);
    Call call(threads, std::nullopt);
    call.requireRoom(settings, source, &orbel_plan::look_bytes, newBytes);
    call.run([&](const orbel_options* options) {
      return orbel_stack_band(stack_.get(), number, &source, &target, options);
    });
  }

 private:
  struct Free {
    void operator()(orbel_stack* stack) const { orbel_stack_free(stack); }
  };
  std::unique_ptr<orbel_stack, Free> stack_;
};

}  // namespace

PYBIND11_MODULE(_engine, module) {
  module.doc() = "Settings, pictures and calls as the engine has them. Private: orbel has the public ones.";
  module.def("version", &orbel_version, "The engine's version.");

  py::class_<orbel_settings>(module, "Settings", "Settings that the engine takes.")
      .def(py::init(&makeSettings), py::kw_only(), py::arg("gain"), py::arg("radius"), py::arg("threshold"),
           py::arg("edges"), py::arg("residual"), py::arg("mix"), py::arg("half"), py::arg("luminance"),
           py::arg("overlay"), py::arg("reference_edge"), py::arg("form"), py::arg("limit"));

  module.def("equalize", &equalize, "Equalizes image into out.", py::arg("settings"), py::arg("image"), py::arg("out"),
             py::arg("mask"), py::arg("threads"), py::arg("is_bgr"), py::arg("new_bytes"));

  py::class_<Stack>(module, "Stack", "A picture taken apart.")
      .def(py::init<const orbel_settings&, const py::array&, std::int32_t, bool>(), py::arg("settings"),
           py::arg("image"), py::arg("threads"), py::arg("is_bgr"))
      .def("weigh", &Stack::weigh, "Puts the picture together again, into out.", py::arg("settings"), py::arg("image"),
           py::arg("out"), py::arg("mask"), py::arg("threads"), py::arg("is_bgr"), py::arg("new_bytes"))
      .def("band", &Stack::band, "Band 0 to 4, or the residual, into out.", py::arg("settings"), py::arg("number"),
           py::arg("image"), py::arg("out"), py::arg("threads"), py::arg("is_bgr"), py::arg("new_bytes"));
}
