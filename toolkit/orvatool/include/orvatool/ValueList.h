#pragma once

#include <orvaspace/ustr.h>

#include <cstdint>
#include <utility>
#include <vector>

/// A choice list: display name and value. Display order is vector order.
using ValueList = std::vector<std::pair<ustr_pre<32>, std::int64_t>>;
