#include "import/csv_import_options_selector.h"

#include "import/csv_parser.h"
#include "qt_text.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QTableView>
#include <QVBoxLayout>

namespace lumbra::shell {

namespace {

// What each slider value shows of the text.
QString sliderText(int value) {
    switch (value) {
    case 1:
        return QObject::tr("Preview: first quarter of the file");
    case 2:
        return QObject::tr("Preview: first half of the file");
    case 3:
        return QObject::tr("Preview: first three quarters of the file");
    default:
        return QObject::tr("Preview: whole file");
    }
}

} // namespace

void CsvPreviewModel::setTable(const tables::DBTable* table) {
    beginResetModel();
    m_table = table;
    m_keys.clear();
    if (m_table) {
        m_keys.reserve(m_table->cols.size());
        for (const auto& column : m_table->cols)
            m_keys.push_back(tables::ColumnNames::key(column));
    }
    endResetModel();
}

int CsvPreviewModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() || !m_table ? 0 : static_cast<int>(m_table->data.size());
}

int CsvPreviewModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_keys.size());
}

QVariant CsvPreviewModel::data(const QModelIndex& index, int role) const {
    if (role != Qt::DisplayRole || !index.isValid() || index.row() >= rowCount() ||
        index.column() >= columnCount())
        return {};
    const auto& row = m_table->data[static_cast<std::size_t>(index.row())].data;
    return toQt(row.valueOr(m_keys[static_cast<std::size_t>(index.column())]));
}

QVariant CsvPreviewModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole || section < 0)
        return {};
    if (orientation == Qt::Vertical)
        return section < rowCount() ? QVariant(section + 1) : QVariant();
    return section < columnCount() ? QVariant(toQt(m_table->cols[static_cast<std::size_t>(section)]))
                                   : QVariant();
}

CsvImportOptionsSelector::CsvImportOptionsSelector(std::string text, const base::CsvOptions& initial,
                                                   QWidget* parent)
    : QDialog(parent), m_options(initial), m_originalText(std::move(text)) {
    setObjectName(QStringLiteral("CsvImportOptionsSelector"));
    setWindowTitle(tr("CSV Import Options"));
    setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    m_options.user_aborted = false;
    m_options = import::proposedOptions(m_originalText, m_options);
    buildControls();
    // A short text is shown whole: the slider has nothing to cut.
    const bool sliding = import::sheet::sliderApplies(m_originalText);
    m_previewSlider->setEnabled(sliding);
    m_previewSlider->setVisible(sliding);
    m_previewSliderLabel->setVisible(sliding);
    {
        const QSignalBlocker quiet(m_previewSlider);
        m_previewSlider->setValue(sliding ? 1 : 4);
    }
    m_previewSliderLabel->setText(sliderText(m_previewSlider->value()));
    shortenText();
    showOptions(m_options);
}

CsvImportOptionsSelector::~CsvImportOptionsSelector() {
    // The view lets go of the table before the table goes.
    m_previewModel->setTable(nullptr);
}

void CsvImportOptionsSelector::buildControls() {
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    layout->addLayout(form);

    m_popupSeparator = new QComboBox(this);
    m_popupSeparator->setObjectName(QStringLiteral("popupSeparator"));
    m_popupSeparator->addItems(
        {tr("Comma ( , )"), tr("Tab"), tr("Semicolon ( ; )"), tr("Blank"), tr("Other")});
    m_textSeparator = new QLineEdit(this);
    m_textSeparator->setObjectName(QStringLiteral("textSeparator"));
    m_textSeparator->setMaximumWidth(48);
    auto* separatorRow = new QHBoxLayout;
    separatorRow->addWidget(m_popupSeparator);
    separatorRow->addWidget(m_textSeparator);
    separatorRow->addStretch();
    form->addRow(tr("Separator:"), separatorRow);

    m_popupDelimiter = new QComboBox(this);
    m_popupDelimiter->setObjectName(QStringLiteral("popupDelimiter"));
    m_popupDelimiter->addItems({tr("Double quote ( \" )"), tr("Single quote ( ' )"), tr("Standard CSV")});
    m_popupDelimiter->setItemData(import::sheet::standardCsvTag,
                                  tr("Quoted fields keep separators and line feeds; \"\" is one quote"),
                                  Qt::ToolTipRole);
    form->addRow(tr("Text delimiter:"), m_popupDelimiter);

    m_checkboxIgnoreorientedquotes = new QCheckBox(tr("Ignore oriented quotes ( \u201C \u201D )"), this);
    m_checkboxIgnoreorientedquotes->setObjectName(QStringLiteral("checkboxIgnoreorientedquotes"));
    form->addRow(QString(), m_checkboxIgnoreorientedquotes);

    m_popupColumnslist = new QComboBox(this);
    m_popupColumnslist->setObjectName(QStringLiteral("popupColumnslist"));
    m_popupColumnslist->addItems({tr("Automatic"), tr("First line"), tr("After the first empty line"),
                                  tr("After the line \"Column\""), tr("Line number")});
    m_textColumnslist = new QLineEdit(this);
    m_textColumnslist->setObjectName(QStringLiteral("textColumnslist"));
    m_textColumnslist->setMaximumWidth(80);
    auto* columnsRow = new QHBoxLayout;
    columnsRow->addWidget(m_popupColumnslist);
    columnsRow->addWidget(m_textColumnslist);
    columnsRow->addStretch();
    form->addRow(tr("Column names:"), columnsRow);

    m_previewSliderLabel = new QLabel(this);
    m_previewSliderLabel->setObjectName(QStringLiteral("previewSliderLabel"));
    m_previewSlider = new QSlider(Qt::Horizontal, this);
    m_previewSlider->setObjectName(QStringLiteral("previewSlider"));
    m_previewSlider->setRange(1, 4);
    m_previewSlider->setPageStep(1);
    m_previewSlider->setTickPosition(QSlider::TicksBelow);
    auto* sliderRow = new QHBoxLayout;
    sliderRow->addWidget(m_previewSliderLabel);
    sliderRow->addWidget(m_previewSlider, 1);
    layout->addLayout(sliderRow);

    m_previewModel = new CsvPreviewModel(this);
    m_previewTable = new QTableView(this);
    m_previewTable->setObjectName(QStringLiteral("previewTable"));
    m_previewTable->setModel(m_previewModel);
    m_previewTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_previewTable->verticalHeader()->setDefaultSectionSize(m_previewTable->fontMetrics().height() + 6);
    layout->addWidget(m_previewTable, 1);

    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    QPushButton* proceed = buttons->addButton(tr("Proceed"), QDialogButtonBox::AcceptRole);
    proceed->setDefault(true);
    layout->addWidget(buttons);
    resize(760, 520);

    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    const auto changed = [this] { controlsChanged(); };
    connect(m_popupSeparator, &QComboBox::currentIndexChanged, this, changed);
    connect(m_popupDelimiter, &QComboBox::currentIndexChanged, this, changed);
    connect(m_popupColumnslist, &QComboBox::currentIndexChanged, this, changed);
    connect(m_checkboxIgnoreorientedquotes, &QCheckBox::toggled, this, changed);
    connect(m_textColumnslist, &QLineEdit::textEdited, this, changed);
    connect(m_textSeparator, &QLineEdit::textEdited, this, [this](const QString& typed) {
        const QString kept = toQt(import::sheet::separatorFieldText(typed.toStdString()));
        if (kept != typed)
            m_textSeparator->setText(kept);
        controlsChanged();
    });
    connect(m_previewSlider, &QSlider::valueChanged, this, [this](int value) {
        m_previewSliderLabel->setText(sliderText(value));
        shortenText();
        rebuildPreview();
    });
}

void CsvImportOptionsSelector::showOptions(const base::CsvOptions& options) {
    m_showing = true;
    const int separatorTag = import::sheet::tagForSeparator(options.separator);
    m_popupSeparator->setCurrentIndex(separatorTag);
    m_textSeparator->setText(separatorTag == import::sheet::otherSeparatorTag
                                 ? toQt(import::utf8Character(options.separator))
                                 : QStringLiteral(","));
    m_popupDelimiter->setCurrentIndex(import::sheet::delimiterTag(options));
    m_checkboxIgnoreorientedquotes->setChecked(options.ignore_oriented_quotes);
    m_popupColumnslist->setCurrentIndex(static_cast<int>(options.first_line));
    m_textColumnslist->setText(QString::number(std::max(1, options.first_line_number)));
    m_showing = false;
    controlsChanged();
}

void CsvImportOptionsSelector::controlsChanged() {
    if (m_showing)
        return;
    const int separatorTag = m_popupSeparator->currentIndex();
    const bool customLine =
        m_popupColumnslist->currentIndex() == static_cast<int>(base::FirstLineStyle::custom);
    m_textSeparator->setVisible(separatorTag == import::sheet::otherSeparatorTag);
    m_textColumnslist->setVisible(customLine);

    m_options.separator = import::sheet::separatorForTag(separatorTag, m_textSeparator->text().toStdString());
    import::sheet::setDelimiterTag(m_options, m_popupDelimiter->currentIndex());
    m_options.ignore_oriented_quotes = m_checkboxIgnoreorientedquotes->isChecked();
    m_options.first_line = static_cast<base::FirstLineStyle>(m_popupColumnslist->currentIndex());
    m_options.first_line_number =
        customLine ? import::sheet::firstLineNumberFromText(m_textColumnslist->text().toStdString()) : 0;
    rebuildPreview();
}

void CsvImportOptionsSelector::shortenText() {
    m_shortenedText = std::string(import::sheet::shortenedText(m_originalText, m_previewSlider->value()));
}

void CsvImportOptionsSelector::rebuildPreview() {
    m_previewModel->setTable(nullptr);
    m_csvtable = import::parseCSVText(m_shortenedText, m_options, "Example", nullptr);
    m_previewModel->setTable(m_csvtable.get());
}

void CsvImportOptionsSelector::reject() {
    m_options.user_aborted = true;
    QDialog::reject();
}

} // namespace lumbra::shell
