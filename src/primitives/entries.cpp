// The public names: each a jump through the table of the row in force. Row -1 is a table too: its bodies run the
// detection and enter the same public function again.

#include <cstddef>
#include <tuple>

#include "primitives/bodies.h"
#include "primitives/processor.h"

namespace {

template <auto publicFunction>
struct FirstCall;

template <typename Result, typename... Arguments, Result (*publicFunction)(Arguments...)>
struct FirstCall<publicFunction> {
  static Result enter(Arguments... arguments) {
    ippSafeInit();
    return publicFunction(arguments...);
  }
};

const Bodies firstCalls = {
#define PRIMITIVE(name, argumentCount) FirstCall<&::name>::enter,
#include "primitives/primitive_list.inc"
#undef PRIMITIVE
};

const Bodies* const rows[] = {&firstCalls, ADDRESS_IN_EACH_ROW(bodies)};

const Bodies& row() { return *rows[jumpIndex() + 1]; }

// The result and argument types of a function, so that its entry need not repeat its declaration.
template <typename Function>
struct Signature;

template <typename Result_, typename... Arguments>
struct Signature<Result_(Arguments...)> {
  using Result = Result_;
  template <std::size_t i>
  using Argument = std::tuple_element_t<i, std::tuple<Arguments...>>;
};

}  // namespace

#define TYPE(name, i) Signature<decltype(::name)>::Argument<i>

#define PARAMETERS_1(name) TYPE(name, 0) a
#define PARAMETERS_2(name) PARAMETERS_1(name), TYPE(name, 1) b
#define PARAMETERS_3(name) PARAMETERS_2(name), TYPE(name, 2) c
#define PARAMETERS_4(name) PARAMETERS_3(name), TYPE(name, 3) d
#define PARAMETERS_5(name) PARAMETERS_4(name), TYPE(name, 4) e
#define PARAMETERS_6(name) PARAMETERS_5(name), TYPE(name, 5) f
#define PARAMETERS_7(name) PARAMETERS_6(name), TYPE(name, 6) g
#define PARAMETERS_8(name) PARAMETERS_7(name), TYPE(name, 7) h
#define PARAMETERS_9(name) PARAMETERS_8(name), TYPE(name, 8) i
#define PARAMETERS_10(name) PARAMETERS_9(name), TYPE(name, 9) j

#define ARGUMENTS_1 a
#define ARGUMENTS_2 a, b
#define ARGUMENTS_3 a, b, c
#define ARGUMENTS_4 a, b, c, d
#define ARGUMENTS_5 a, b, c, d, e
#define ARGUMENTS_6 a, b, c, d, e, f
#define ARGUMENTS_7 a, b, c, d, e, f, g
#define ARGUMENTS_8 a, b, c, d, e, f, g, h
#define ARGUMENTS_9 a, b, c, d, e, f, g, h, i
#define ARGUMENTS_10 a, b, c, d, e, f, g, h, i, j

extern "C" {
#define PRIMITIVE(name, argumentCount)                                         \
  Signature<decltype(::name)>::Result name(PARAMETERS_##argumentCount(name)) { \
    return row().name(ARGUMENTS_##argumentCount);                              \
  }
#include "primitives/primitive_list.inc"
#undef PRIMITIVE
}
