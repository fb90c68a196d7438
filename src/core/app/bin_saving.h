#pragma once

#include <string>

namespace lumbra::project {
class Bin;
class SharedStuff;
} // namespace lumbra::project

namespace lumbra::app {

// The separators the CSV save offers, by the title of their button; "TAB" stands for a tab.
[[nodiscard]] std::string csvSeparatorForTitle(const std::string& title);
// The remembered separator title ("csvSeparator"), "," when none was chosen yet; it is then remembered.
[[nodiscard]] std::string rememberedCsvSeparator(project::SharedStuff& sharedstuff);

// "Export Film Format" is offered only when the project's film format holds a value; an empty one is none.
[[nodiscard]] bool offersFilmFormat(const project::SharedStuff& sharedstuff);
// Writes the bin to an ALE file with its layout's columns, the film format line only while the project
// offers and saves it; the log says how it went.
bool saveBinAsALE(project::SharedStuff& sharedstuff, const project::Bin& bin, const std::string& path);
// Writes the bin as delimited text with its layout's columns, the heading block when asked.
bool saveBinAsCSV(project::SharedStuff& sharedstuff, const project::Bin& bin, const std::string& path,
                  const std::string& separatorTitle, bool exportHeaders);
// A file chooser that gave nothing says so in a card; a cancelled one only in the log, as cancel is no
// failure.
void logChooserFailure(project::SharedStuff& sharedstuff, bool cancelled);

} // namespace lumbra::app
