#include "pictures/xmp_packet.h"

#include <array>
#include <cctype>
#include <cstddef>
#include <cstdlib>
#include <utility>

namespace orbel {

namespace {

// By the identifier that is the filter's own in its terminology, too.
const std::string nameSpace = "urn:uuid:6d1f0f5e-7a0c-4c52-9b43-2f6a86a1c7d4#";
const std::string property = "MadeWith";

// Without a wrapper.
const std::string emptyPacket =
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
    "</rdf:RDF></x:xmpmeta>";

constexpr std::array<std::pair<char, const char*>, 5> entities = {
    {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&apos;"}}};

std::string escaped(const std::string& text) {
  std::string all;
  for (const char c : text) {
    std::string one(1, c);
    for (const auto& [character, entity] : entities) {
      if (c == character) one = entity;
    }
    all += one;
  }
  return all;
}

// The character that an entity stands for, as far as its like can stand in the property, which is ASCII; else 0.
char meaningOf(const std::string& entity) {
  for (const auto& [character, known] : entities) {
    if (entity == known) return character;
  }
  if (entity.rfind("&#", 0) != 0) return 0;
  const bool hexadecimal = entity[2] == 'x';
  const long code = std::strtol(entity.c_str() + (hexadecimal ? 3 : 2), nullptr, hexadecimal ? 16 : 10);
  return code > 0 && code < 128 ? static_cast<char>(code) : '\0';
}

std::string unescaped(const std::string& text) {
  std::string all;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::size_t end = text[at] == '&' ? text.find(';', at) : std::string::npos;
    const char meaning = end == std::string::npos ? '\0' : meaningOf(text.substr(at, end + 1 - at));
    all += meaning != 0 ? meaning : text[at];
    if (meaning != 0) at = end;
  }
  return all;
}

struct Span {
  std::size_t begin, end;
};

bool isBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

std::size_t afterBlanks(const std::string& text, std::size_t at) {
  while (at < text.size() && isBlank(text[at])) ++at;
  return at;
}

// The name of the property with the prefix that the packet has for its name space; empty when it has none.
std::string nameIn(const std::string& packet) {
  const std::size_t uri = packet.find(nameSpace);
  const std::string declaration = "xmlns:";
  const std::size_t from = uri == std::string::npos ? uri : packet.rfind(declaration, uri);
  if (from == std::string::npos) return "";
  const std::size_t prefix = from + declaration.size();
  return packet.substr(prefix, packet.find_first_of("= \t\r\n", prefix) - prefix) + ":" + property;
}

// Where the property's value stands, still with its entities.
std::optional<Span> valueIn(const std::string& packet) {
  const std::string name = nameIn(packet);
  if (name.empty()) return std::nullopt;
  for (std::size_t at = 1; (at = packet.find(name, at)) != std::string::npos; at += name.size()) {
    const std::size_t behind = afterBlanks(packet, at + name.size());
    if (behind >= packet.size()) break;
    Span span{0, std::string::npos};
    if (packet[at - 1] == '<' && packet[behind] == '>') {
      span = {behind + 1, packet.find('<', behind)};
    } else if (isBlank(packet[at - 1]) && packet[behind] == '=') {
      const std::size_t quote = afterBlanks(packet, behind + 1);
      if (quote < packet.size()) span = {quote + 1, packet.find(packet[quote], quote + 1)};
    }
    if (span.end != std::string::npos) return span;
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> withProperty(const std::string& packet, const std::string& text) {
  if (packet.empty()) return withProperty(emptyPacket, text);
  std::string changed = packet;
  if (const auto old = valueIn(packet)) return changed.replace(old->begin, old->end - old->begin, escaped(text));
  const std::size_t end = packet.rfind("</rdf:RDF>");
  if (end == std::string::npos) return std::nullopt;
  return changed.insert(end, R"( <rdf:Description rdf:about="" xmlns:orbel=")" + nameSpace + "\" orbel:" + property +
                                 "=\"" + escaped(text) + "\"/>\n");
}

std::string unwrapped(const std::string& packet) {
  const std::string last = "</x:xmpmeta>";
  const std::size_t begin = packet.find("<x:xmpmeta");
  const std::size_t end = packet.rfind(last);
  if (begin == std::string::npos || end == std::string::npos || end < begin) return packet;
  return packet.substr(begin, end + last.size() - begin);
}

std::optional<std::string> propertyIn(const std::string& packet) {
  const auto value = valueIn(packet);
  if (!value) return std::nullopt;
  return unescaped(packet.substr(value->begin, value->end - value->begin));
}

}  // namespace orbel
