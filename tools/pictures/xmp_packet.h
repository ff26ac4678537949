// The program's own property in an XMP packet, beside whatever else stands there.
//
// A packet is RDF in XML (ISO 16684-1). It is not parsed and written anew: all that isn't the property keeps its bytes,
// whatever other programs have put there.
#pragma once

#include <optional>
#include <string>

namespace orbel {

// The packet with the property set to the text, in the place of an old value; a packet of its own where there is none
// (an empty one). Nothing, when the packet has no RDF in UTF-8 that the property could stand in.
std::optional<std::string> withProperty(const std::string& packet, const std::string& text);

// Without the wrapper that programs scan files for: the image library doesn't know a packet in a HEIF file that begins
// with it.
std::string unwrapped(const std::string& packet);

// The property's text, in each of the forms that programs give it when they write the packet anew: an attribute or an
// element, under any prefix. Nothing when it isn't there.
std::optional<std::string> propertyIn(const std::string& packet);

}  // namespace orbel
