#include "chain/chainable_master.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace lumbra::shell {

ChainableMaster::ChainableMaster(project::SharedStuff& sharedstuff, QWidget* parent)
    : SuperimposablePanelViewController(parent) {
    setObjectName(QStringLiteral("chainablemaster"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 4, 0, 0);
    layout->setSpacing(4);

    auto* header = new QHBoxLayout;
    header->setContentsMargins(10, 0, 6, 0);
    m_titleLabel = new QLabel(this);
    m_titleLabel->setObjectName(QStringLiteral("titleLabel"));
    QFont titleFont = m_titleLabel->font();
    titleFont.setBold(true);
    m_titleLabel->setFont(titleFont);
    m_closeButton = new QToolButton(this);
    m_closeButton->setObjectName(QStringLiteral("closeButton"));
    m_closeButton->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    m_closeButton->setToolTip(tr("Close"));
    m_closeButton->setAutoRaise(true);
    header->addWidget(m_titleLabel);
    header->addStretch(1);
    header->addWidget(m_closeButton);
    layout->addLayout(header);

    m_scrollArea = new QScrollArea(this);
    m_scrollArea->setFrameShape(QFrame::NoFrame);
    m_scrollArea->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_scrollArea->setWidgetResizable(false);
    m_viewsContainer = new QWidget;
    m_viewsContainer->setObjectName(QStringLiteral("viewsContainer"));
    m_scrollArea->setWidget(m_viewsContainer);
    layout->addWidget(m_scrollArea, 1);

    connect(m_closeButton, &QToolButton::clicked, this, &ChainableMaster::closeAll);
    setup(sharedstuff);
}

ChainableMaster::~ChainableMaster() = default;

void ChainableMaster::setup(project::SharedStuff& sharedstuff) {
    m_sharedstuff = &sharedstuff;
    // The row stands on a rounded panel of the header colour, like the tables' titles.
    m_viewsContainer->setAttribute(Qt::WA_StyledBackground);
    m_viewsContainer->setStyleSheet(
        QStringLiteral("#viewsContainer { background: palette(alternate-base); border-radius: 10px; }"));
}

ChainableViewController& ChainableMaster::start(std::unique_ptr<ChainableViewController> first,
                                                const ChainableInput* input) {
    first->attach(m_sharedstuff, this);
    ChainableViewController& panel = adopt(std::move(first));
    layoutPanels();
    ChainableInput plain;
    plain.sharedstuff = m_sharedstuff;
    plain.master = this;
    panel.receive(input ? *input : plain);
    return panel;
}

void ChainableMaster::next(ChainableViewController* from, const ChainableInput& input, bool create) {
    switch (m_chain.nextMove(from, create)) {
    case app::NextMove::notInChain:
        layoutPanels();
        return;
    case app::NextMove::nothing:
        return;
    case app::NextMove::appendNew: {
        auto created = from->createNext();
        if (!created) {
            return;
        }
        removeFollowing(from, true);
        adopt(std::move(created));
        layoutPanels();
        break;
    }
    case app::NextMove::reuseFollowing:
        removeFollowing(m_chain.following(from), true);
        break;
    }
    m_chain.following(from)->receive(input);
    layoutPanels();
}

void ChainableMaster::replace(ChainableViewController* old,
                              std::unique_ptr<ChainableViewController> replacement,
                              const ChainableInput* input) {
    removeFrom(old);
    ChainableViewController& panel = adopt(std::move(replacement));
    layoutPanels();
    ChainableInput plain;
    plain.sharedstuff = m_sharedstuff;
    plain.master = this;
    panel.receive(input ? *input : plain);
    layoutPanels();
}

void ChainableMaster::removeFollowing(ChainableViewController* controller, bool relayout) {
    dismiss(m_chain.removeFollowing(controller));
    if (relayout) {
        layoutPanels();
    }
}

void ChainableMaster::removeFrom(ChainableViewController* controller) {
    if (!m_chain.indexOf(controller)) {
        return;
    }
    dismiss(m_chain.removeFrom(controller));
    layoutPanels();
}

void ChainableMaster::layoutPanels() {
    const auto panels = controllersChain();
    std::vector<app::PanelWidthRule> rules;
    rules.reserve(panels.size());
    for (const ChainableViewController* panel : panels) {
        rules.push_back({panel->widthWeight(), panel->maxWidthPercent()});
    }
    const double masterWidth = width();
    const app::ChainGeometry geometry = app::layoutChain(masterWidth, rules);
    m_trailingSpace = geometry.trailingSpace;

    const int height = m_scrollArea->viewport()->height();
    const double used = masterWidth - m_trailingSpace - 10.0;
    // The rounded background spans the row; panels never ask for more than the master is wide.
    m_viewsContainer->resize(std::max(0, static_cast<int>(used)), height);
    for (std::size_t i = 0; i < panels.size(); ++i) {
        const app::PanelFrame& frame = geometry.frames[i];
        panels[i]->setGeometry(static_cast<int>(frame.x), 0, static_cast<int>(frame.width), height);
        if (panels[i]->parentWidget() != m_viewsContainer) {
            panels[i]->setParent(m_viewsContainer);
        }
        panels[i]->show();
        panels[i]->afterLayout();
    }
}

void ChainableMaster::closeAll() {
    if (ChainableViewController* first = m_chain.at(0)) {
        removeFrom(first);
    }
    layoutPanels();
    emit closeRequested();
}

void ChainableMaster::setTitle(const QString& title) {
    m_titleLabel->setText(title);
}

std::vector<ChainableViewController*> ChainableMaster::controllersChain() const {
    std::vector<ChainableViewController*> out;
    out.reserve(m_chain.size());
    for (std::size_t i = 0; i < m_chain.size(); ++i) {
        out.push_back(m_chain.at(i));
    }
    return out;
}

void ChainableMaster::resizeEvent(QResizeEvent* event) {
    SuperimposablePanelViewController::resizeEvent(event);
    afterResize();
}

void ChainableMaster::showEvent(QShowEvent* event) {
    SuperimposablePanelViewController::showEvent(event);
    layoutPanels();
}

ChainableViewController& ChainableMaster::adopt(std::unique_ptr<ChainableViewController> panel) {
    panel->setParent(m_viewsContainer);
    return m_chain.append(std::move(panel));
}

void ChainableMaster::dismiss(std::vector<std::unique_ptr<ChainableViewController>> panels) {
    for (auto& panel : panels) {
        panel->hide();
        panel->setParent(nullptr);
        // A panel may be leaving from inside one of its own slots: it goes once the event is over.
        panel.release()->deleteLater();
    }
}

} // namespace lumbra::shell
