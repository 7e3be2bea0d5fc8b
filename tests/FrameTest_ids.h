#pragma once

#define IDC_FRAME_NAME 101
#define IDC_FRAME_NOTE 102
#define IDC_FRAME_CLEAR 103
