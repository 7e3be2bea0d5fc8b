#pragma once

// HOSTWINDOW. Shared with the resource compiler, which reads no constexpr.
#define IDC_HOST_SEARCH_LBL 100
#define IDC_HOST_SEARCH 101
#define IDC_HOST_DIALOGS_LBL 102
#define IDC_HOST_DIALOGS 103
#define IDC_HOST_SHOWS 104
#define IDC_HOST_LANGUAGE_LBL 105
#define IDC_HOST_LANGUAGE 106
#define IDC_HOST_BEFORE_LBL 107
#define IDC_HOST_BEFORE 108
#define IDC_HOST_AFTER_LBL 109
#define IDC_HOST_AFTER 110
#define IDC_HOST_LOG_LBL 111
#define IDC_HOST_LOG 112
#define IDC_HOST_STATUS 113
