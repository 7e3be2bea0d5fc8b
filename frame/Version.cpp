#include <occommonui/Version.h>

extern "C" int occommonui_version_nmb(int n) {
    return n == kOcCommonUiVersion ? kOcCommonUiVersion : -kOcCommonUiVersion;
}
