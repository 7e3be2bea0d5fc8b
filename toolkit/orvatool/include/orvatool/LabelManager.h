#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>

#include <cstddef>
#include <vector>

namespace LabelManager {

/// The labels of an object: texts in the order in which they were added, each once. The text form separates them with
/// commas; blanks around a label do not count, and a label holds no comma.
class ORVATOOL_API Labels {
public:
    using const_iterator = std::vector<ustr>::const_iterator;

    Labels();
    /// FromString.
    explicit Labels(const wchar_t* text);
    Labels(const Labels&);
    Labels(Labels&&) noexcept;
    Labels& operator=(const Labels&);
    Labels& operator=(Labels&&) noexcept;
    ~Labels();

    /// Replaces the labels by those of a text; null counts as empty. Empty labels and repetitions are left out.
    void FromString(const wchar_t* text);
    /// The labels with ", " between them.
    ustr ToString() const;

    bool IsEmpty() const { return labels_.empty(); }
    std::size_t size() const { return labels_.size(); }
    /// Adds the labels that are not there yet. Labels are the same only when they are equal, case included.
    void Add(const Labels& labels);
    void Add(const ustr& label);
    /// Removes labels; true when there was one of them.
    bool Remove(const Labels& labels);
    void Reserve(std::size_t size) { labels_.reserve(size); }

    const_iterator begin() const { return labels_.begin(); }
    const_iterator end() const { return labels_.end(); }
    bool operator==(const Labels&) const;

private:
    std::vector<ustr> labels_;
};

}  // namespace LabelManager
