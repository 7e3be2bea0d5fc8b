#include <occommonui/ReportTemplate.h>

ReportTemplate::Context::Context() = default;
ReportTemplate::Context::Context(const Context&) = default;
ReportTemplate::Context::Context(Context&&) noexcept = default;
ReportTemplate::Context& ReportTemplate::Context::operator=(const Context&) = default;
ReportTemplate::Context& ReportTemplate::Context::operator=(Context&&) noexcept = default;
ReportTemplate::Context::~Context() = default;

bool ReportTemplate::IsInstanceAttr(int propId) {
    constexpr int kFirst = 8000;
    constexpr int kLast = 8999;
    return propId >= kFirst && propId <= kLast;
}
