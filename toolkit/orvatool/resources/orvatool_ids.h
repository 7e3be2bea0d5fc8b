#pragma once

// Shared with the resource compiler, which reads no constexpr.
#define IDC_ASKVALUE_PROMPT 100
#define IDC_ASKVALUE_TEXT 101
#define IDC_ASKVALUE_FILTER 102
#define IDC_ASKVALUE_LIST 103
#define IDC_ASKVALUE_TREE 104
