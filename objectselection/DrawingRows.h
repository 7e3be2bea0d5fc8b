#pragma once

#include <occommonui/ObjectSelection.h>
#include <orvaspace/ustr.h>

#include <cstddef>
#include <vector>

/// How all selections of this process show drawings.
struct DrawingView {
    bool currentFolderOnly = false;  ///< only those that lie in the folder of the current drawing
    bool asFolders = false;          ///< below the folders that they lie in
};
DrawingView& SharedDrawingView();

/// A row of a tree of drawings.
struct DrawingRow {
    static constexpr std::size_t kFolder = static_cast<std::size_t>(-1);

    int level = 0;
    ustr_pre<32> text;
    std::size_t drawing = kFolder;  ///< its place among the drawings
};

/// The drawings as the view shows them, in their order; folders as users sort names. `current` is the path of the
/// current drawing; while it is not known, drawings of all folders are shown. Drawings of the same name are told apart
/// by their folder.
std::vector<DrawingRow> ArrangeDrawings(const std::vector<ObjectSelection::Dlg::DrawingEntry>& drawings,
                                        const ustr& current, const DrawingView& view);
