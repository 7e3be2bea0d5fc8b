#include "host/dialogs/Choose.h"

#include <orvatool/AskValueDlg.h>

namespace ochost {

std::optional<std::size_t> Choose(const DialogContext& context, const wchar_t* title, const wchar_t* prompt,
                                  const std::vector<ustr>& names) {
    ValueList choices;
    for (const ustr& name : names)
        choices.emplace_back(name, std::ssize(choices));
    std::int64_t value = 0;
    const int chosen = AskValueDlg::Run(context.parent, context.app, title, prompt, choices, value);
    if (chosen < 0) return std::nullopt;
    return static_cast<std::size_t>(chosen);
}

}  // namespace ochost
