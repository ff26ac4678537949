#include "batch/outcome.h"

#include <fmt/format.h>

namespace orbel {

using nlohmann::json;

NLOHMANN_JSON_SERIALIZE_ENUM(Outcome::Status, {{Outcome::Status::Failed, "failed"},
                                               {Outcome::Status::Done, "done"},
                                               {Outcome::Status::Skipped, "skipped"}})

std::string jsonLine(const json& object) { return object.dump(-1, ' ', false, json::error_handler_t::replace) + "\n"; }

json toJson(const Failure& failure) {
  return {{"code", wordOf(failure.cause)}, {"about", failure.file}, {"reason", failure.reason}};
}

json toJson(const Outcome& o) {
  json object = {{"file", o.input},     {"output", o.output}, {"status", o.status},
                 {"notes", o.notes},    {"width", o.width},   {"height", o.height},
                 {"bits", o.bits},      {"memory", o.memory}, {"estimated_seconds", o.estimatedSeconds},
                 {"seconds", o.seconds}};
  object.update(toJson(Failure(o.about, o.reason, o.cause)));
  return object;
}

Outcome outcomeFrom(const json& object) {
  Outcome o;
  object.at("file").get_to(o.input);
  object.at("output").get_to(o.output);
  object.at("status").get_to(o.status);
  object.at("notes").get_to(o.notes);
  o.cause = causeFrom(object.at("code"));
  object.at("about").get_to(o.about);
  object.at("reason").get_to(o.reason);
  object.at("width").get_to(o.width);
  object.at("height").get_to(o.height);
  object.at("bits").get_to(o.bits);
  object.at("memory").get_to(o.memory);
  object.at("estimated_seconds").get_to(o.estimatedSeconds);
  object.at("seconds").get_to(o.seconds);
  return o;
}

std::string printable(const std::string& text) {
  std::string line;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (c == '\n') {
      line += "\\n";
    } else if (code < ' ' || code == 0x7F) {
      line += fmt::format("\\x{:02x}", code);
    } else {
      line += c;
    }
  }
  return line;
}

}  // namespace orbel
