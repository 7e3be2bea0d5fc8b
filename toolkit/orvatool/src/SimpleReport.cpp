#include <orvatool/SimpleReport.h>

#include <algorithm>

struct SimpleReport::Rows {
    std::vector<ObjPosInDwg> places;  // one for each row
    std::vector<ustr> texts;          // row by row, one for each column
};

SimpleReport::SimpleReport(const wchar_t* name) : name_(name) {
}
SimpleReport::SimpleReport(const SimpleReport&) = default;
SimpleReport::SimpleReport(SimpleReport&&) noexcept = default;
SimpleReport& SimpleReport::operator=(const SimpleReport&) = default;
SimpleReport& SimpleReport::operator=(SimpleReport&&) noexcept = default;
SimpleReport::~SimpleReport() = default;

int SimpleReport::AddColumn(const ustr& text, int width, int format) {
    columns_.push_back({text, width, format});
    ClearRows();
    return static_cast<int>(columns_.size()) - 1;
}

int SimpleReport::AddRow(const ObjPosInDwg& pos) {
    Rows& rows = OwnRows();
    // The texts first: what counts are the places, so that running out of memory in between adds nothing.
    rows.texts.resize((rows.places.size() + 1) * columns_.size());
    rows.places.push_back(pos);
    return RowCount() - 1;
}

void SimpleReport::SetText(int row, int column, const ustr& text) {
    if (row < 0 || row >= RowCount() || column < 0 || column >= static_cast<int>(columns_.size())) return;
    OwnRows().texts[static_cast<std::size_t>(row) * columns_.size() + static_cast<std::size_t>(column)] = text;
}

const ustr& SimpleReport::Text(int row, int column) const {
    static const ustr none;
    if (row < 0 || row >= RowCount() || column < 0 || column >= static_cast<int>(columns_.size())) return none;
    return rows_->texts[static_cast<std::size_t>(row) * columns_.size() + static_cast<std::size_t>(column)];
}

const ObjPosInDwg& SimpleReport::Pos(int row) const {
    static const ObjPosInDwg none;
    return row < 0 || row >= RowCount() ? none : rows_->places[static_cast<std::size_t>(row)];
}

int SimpleReport::RowCount() const {
    return rows_ ? static_cast<int>(rows_->places.size()) : 0;
}

void SimpleReport::ReserveRows(int count) {
    Rows& rows = OwnRows();
    const auto reserved = static_cast<std::size_t>(std::max(count, 0));
    rows.places.reserve(reserved);
    rows.texts.reserve(reserved * columns_.size());
}

void SimpleReport::ClearRows() {
    rows_.reset();
}

// The rows, made this report's own before they change.
SimpleReport::Rows& SimpleReport::OwnRows() {
    if (!rows_) {
        rows_ = std::make_shared<Rows>();
    } else if (rows_.use_count() > 1) {
        rows_ = std::make_shared<Rows>(*rows_);
    }
    return *rows_;
}
