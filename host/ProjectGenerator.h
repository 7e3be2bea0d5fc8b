#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "host/ProjectStore.h"

namespace ochost {

/// Gives the UTF-8 text of a data file by its name ("rooms"), empty when there is none. host/data/README.md describes
/// the files. The text must live as long as the generator works.
using TextSource = std::function<std::string_view(std::string_view name)>;

/// The data files that are part of the executable (resources of host/host_data.rc).
std::string_view EmbeddedText(std::string_view name);

constexpr int kMaxScale = 200;

/// Makes a realistic project: an office building with its drawings, rooms, systems, parts and properties. `scale`
/// (1..kMaxScale, else BadInput) gives that many buildings and as many manufacturers' product ranges. The same scale
/// and texts give the same content. A text that does not follow its format fails as BadInput, with file and line.
Result<ProjectContent> GenerateProject(int scale, const TextSource& texts = EmbeddedText);

/// Opens the project file, after generating it and running `complete` on it when it does not exist.
Result<ProjectStore> OpenOrGenerateProject(const std::wstring& path, int scale,
                                           const ProjectStore::Completion& complete = {});

}  // namespace ochost
