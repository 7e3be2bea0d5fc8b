#pragma once

#include <occommonui/UpdateDwgData.h>

namespace UpdateDwgData {

/// The options as the text of an XML document; throws when the selection cannot be written.
ustr ToXml(const Options& options);

/// Reads the text of an XML document. False, with the options at their defaults, for a newer format or what cannot be
/// read. The database is where the selection looks its drawings up.
bool FromXml(const QBaseDb& db, const ustr& xml, Options& options);

}  // namespace UpdateDwgData
