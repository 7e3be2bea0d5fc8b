#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>
#include <orvatool/Win32Types.h>

#include <cstdint>
#include <string>
#include <vector>

/// Texts of the user interface. Every text has an application, an id and an English default that travels with it in the
/// code; a catalogue `lang/<language>.xlf` beside the toolkit (XLIFF 1.2, unit id "<application>:<id>") may replace the
/// default. A catalogue is read when the first text is asked for; one that is missing or damaged means the defaults.
/// One thread: the user interface's.
namespace Lng {

/// The product's applications. The value selects the text catalogue and the application's name.
enum AppID : std::int32_t {
    NoApp = 0,
    Hpv = 1,         ///< heating, plumbing and ventilation; also the catalogue of the shared dialogs
    Electrical = 2,  ///< electrical design
    Common = 3,      ///< texts that the whole product shares; its name is the product's
    Building = 4,
    Schematics = 6,
    Automation = 7,
};

/// The catalogue's text of `textId` for `app` in the user's language, else `defaultText` as it stands (a leading "#"
/// included). A translation whose printf conversions differ from the default's is refused in favour of the default.
/// Null defaultText counts as empty.
ORVATOOL_API ustr text(AppID app, int textId, const wchar_t* defaultText);

/// Sets the caption of `dlg` to makeDlgHeader(app, textId, defaultText, titleApp).
ORVATOOL_API void setdlgheader(AppID app, HWND dlg, int textId, const wchar_t* defaultText, AppID titleApp);

/// The text, followed by " - " and the name of `titleApp` when that application has a name.
ORVATOOL_API ustr makeDlgHeader(AppID app, int textId, const wchar_t* defaultText, AppID titleApp);

/// Sets the text of a control; a control that does not exist is passed over. With `append` the text is added to the
/// control's present text instead of replacing it.
ORVATOOL_API void setdlgitemtext(AppID app, HWND dlg, int ctrlId, int textId, const wchar_t* defaultText, bool append);
ORVATOOL_API void setdlgitemtext(HWND dlg, int ctrlId, const ustr& text, bool append);

/// The application's display name, such as "OrvaCAD Electrical"; with `shortName` without the product's name. Empty for
/// an unknown application.
ORVATOOL_API ustr GetAppName(AppID app, bool shortName);

/// The application's tag of a few letters, such as "OCE". Empty for an unknown application.
ORVATOOL_API ustr GetAppTag(AppID app);

/// The language whose texts are made up from the defaults: bracketed, accented and a third longer; printf conversions
/// and mnemonics stay, and so do texts that begin with "#". It shows texts that bypass the catalogue and controls that
/// are too narrow.
inline constexpr wchar_t kPseudoLanguage[] = L"qps-ploc";

/// The language in use, as a language tag such as "en", "fi".
ORVATOOL_API ustr GetLanguage();

/// Switches the language for the whole process from now on; windows that are open keep their texts until they set them
/// again. Does not touch the user's setting. A tag finds its language whatever its case, and "sv-FI" finds "sv" when it
/// has no catalogue of its own; an unknown language means "en". Null or empty: back to the user's own setting (the
/// value "Language" of the product's key), else the language of the system, as far as they are on offer.
ORVATOOL_API void SetLanguage(const wchar_t* language);

/// Keeps `language` as the user's own setting and switches to it; null or empty forgets the setting. False, and the
/// language stays, when it cannot be stored.
ORVATOOL_API bool SetUserLanguage(const wchar_t* language);

/// The languages on offer: "en" first, then the catalogues found, by tag.
ORVATOOL_API std::vector<ustr> GetLanguages();

/// True when two printf formats ask for the same arguments: same conversions, sizes and order. Flags, widths and
/// precisions may differ, unless they are arguments themselves; "%%" does not count. A null is like another null only.
ORVATOOL_API bool SameConversions(const wchar_t* format, const wchar_t* other);

}  // namespace Lng

/// The catalogue of the dialogs that the product's modules share, and of the texts that the whole product shares.
inline constexpr Lng::AppID kLibraryTexts = Lng::Hpv;
inline constexpr Lng::AppID kSharedTexts = Lng::Common;
