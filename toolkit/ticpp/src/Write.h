#pragma once

#include <string>
#include <string_view>

class TiXmlNode;

namespace ticpp::detail {

// A node and all below it as XML that the parser reads back to the same names, values and texts.
std::string WriteXml(const TiXmlNode& top, std::string_view indent, std::string_view lineBreak);

}  // namespace ticpp::detail
