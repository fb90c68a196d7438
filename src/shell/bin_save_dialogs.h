#pragma once

#include <QString>
#include <optional>

class QWidget;

namespace lumbra::shell {

// What the user chose in the save panel of one bin.
struct BinSaveChoice {
    std::optional<QString> path;
    // True when the panel was cancelled; false with no path when it gave nothing.
    bool cancelled = false;
    // The "Export Film Format" box, when it was shown.
    std::optional<bool> filmFormat;
    // The separator button pressed: ",", ";" or "TAB".
    std::optional<QString> separatorTitle;
    bool exportHeaders = true;
};

// "Select a .ale file to save", named after the bin; the film format box only when the project has one.
[[nodiscard]] BinSaveChoice askAleSavePath(QWidget* parent, const QString& name, bool showFilmFormat,
                                           bool filmFormat);
// "Select a .csv file to save" with the separator buttons and "Export Headers".
[[nodiscard]] BinSaveChoice askCsvSavePath(QWidget* parent, const QString& name,
                                           const QString& separatorTitle);

} // namespace lumbra::shell
