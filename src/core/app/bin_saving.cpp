#include "app/bin_saving.h"

#include "import/ale_writer.h"
#include "import/csv_writer.h"
#include "project/bin.h"
#include "project/shared_stuff.h"

namespace lumbra::app {

namespace {

using base::NotificationType;

std::vector<std::string> layoutColumns(const project::Bin& bin) {
    return bin.layout ? bin.layout->columns : std::vector<std::string>{};
}

} // namespace

std::string csvSeparatorForTitle(const std::string& title) {
    return title == "TAB" ? "\t" : title;
}

std::string rememberedCsvSeparator(project::SharedStuff& sharedstuff) {
    auto [it, added] = sharedstuff.options.try_emplace("csvSeparator", ",");
    return it->second;
}

bool offersFilmFormat(const project::SharedStuff& sharedstuff) {
    return sharedstuff.film_format.has_value() && !sharedstuff.film_format->empty();
}

bool saveBinAsALE(project::SharedStuff& sharedstuff, const project::Bin& bin, const std::string& path) {
    const tables::ALETable* table = bin.table();
    // The user confirmed the name in the chooser, so an existing file is replaced.
    const bool omitFilmFormat = !(sharedstuff.saving_film_format && offersFilmFormat(sharedstuff));
    const bool saved = table && import::saveALE(*table, path, layoutColumns(bin), true, omitFilmFormat);
    if (saved)
        sharedstuff.addLog("Bin correctly saved", true, "", NotificationType::OK);
    else
        sharedstuff.addLog("ERROR while saving to .ale file", true, "", NotificationType::KO);
    return saved;
}

bool saveBinAsCSV(project::SharedStuff& sharedstuff, const project::Bin& bin, const std::string& path,
                  const std::string& separatorTitle, bool exportHeaders) {
    const tables::ALETable* table = bin.table();
    const bool saved =
        table && import::saveCSV(*table, path, csvSeparatorForTitle(separatorTitle), exportHeaders,
                                 layoutColumns(bin), true, !sharedstuff.saving_film_format);
    if (saved)
        sharedstuff.addLog("CSV Correctly saved", true, "", NotificationType::OK);
    else
        sharedstuff.addLog("ERROR while saving to .csv file", true, "", NotificationType::KO);
    return saved;
}

void logChooserFailure(project::SharedStuff& sharedstuff, bool cancelled) {
    if (cancelled)
        sharedstuff.addLog("Operation aborted by user", false, "", NotificationType::OK);
    else
        sharedstuff.addLog("The file selector returned nil", true, "", NotificationType::KO);
}

} // namespace lumbra::app
