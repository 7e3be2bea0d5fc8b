#pragma once

#include <occommonui/ReportDefinitionType.h>

namespace ticpp {
class Element;
}

/// The format in which definitions are written.
inline constexpr int kDefinitionFormat = 20211229;  // stored: a change of the format brings a new number

/// What an element says about a definition after its "Version" and "Format", as attributes and children. Throws
/// ticpp::Exception; the element may then hold a part.
void WriteDefinitionContent(ticpp::Element& element, const ReportDefinitionType& definition);

/// Reads it into a new record. Throws ticpp::Exception when an attribute that the format requires is missing or
/// unreadable; the record may then hold a part.
void ReadDefinitionContent(const ticpp::Element& element, int format, ReportDefinitionType& definition);
