#pragma once

#include <string>
#include <string_view>

namespace ticpp::detail {

// The whole of a file. Throws when it cannot be read or is larger than kMaxBytes.
std::string ReadFile(std::string_view name);

// Makes the file hold exactly this, or throws and leaves it as it was.
void WriteFile(std::string_view name, std::string_view bytes);

}  // namespace ticpp::detail
