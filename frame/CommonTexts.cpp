#include "CommonTexts.h"

ustr NamePrompt() {
    return Lng::text(kLibraryTexts, 1106, L"Name:");
}

ustr UnknownPropertyText(int propId) {
    ustr text;
    text.format(Lng::text(kLibraryTexts, 25918, L"Unknown property %d").c_str(), propId);
    return text;
}
