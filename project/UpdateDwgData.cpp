#include <occommonui/UpdateDwgData.h>

namespace UpdateDwgData {

Options::Options() = default;
Options::Options(const Options&) = default;
Options::Options(Options&&) noexcept = default;
Options& Options::operator=(const Options&) = default;
Options& Options::operator=(Options&&) noexcept = default;
Options::~Options() = default;

namespace PrjDb {

OptionsRec::OptionsRec() = default;
OptionsRec::OptionsRec(const OptionsRec&) = default;
OptionsRec::OptionsRec(OptionsRec&&) noexcept = default;
OptionsRec& OptionsRec::operator=(const OptionsRec&) = default;
OptionsRec& OptionsRec::operator=(OptionsRec&&) noexcept = default;
OptionsRec::~OptionsRec() = default;

}  // namespace PrjDb
}  // namespace UpdateDwgData
