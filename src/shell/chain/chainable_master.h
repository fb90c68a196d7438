#pragma once

#include "app/chain_layout.h"
#include "chain/chainable_view_controller.h"

#include <QWidget>
#include <memory>
#include <vector>

class QLabel;
class QScrollArea;
class QToolButton;

namespace lumbra::project {
class SharedStuff;
}

namespace lumbra::shell {

// Anything the main window lays over its sub container.
class SuperimposablePanelViewController : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

    // Given the project when the panel is placed.
    virtual void setup(project::SharedStuff& sharedstuff) = 0;
    // The sub container changed size.
    virtual void afterResize() {}
};

// The row of a multi-step tool: panels side by side, growing to the right, with the chain's title
// and a button that closes the whole chain. The master owns its panels.
class ChainableMaster : public SuperimposablePanelViewController {
    Q_OBJECT

public:
    ChainableMaster(project::SharedStuff& sharedstuff, QWidget* parent = nullptr);
    ~ChainableMaster() override;

    void setup(project::SharedStuff& sharedstuff) override;
    void afterResize() override { layoutPanels(); }

    // The first panel, as the main window places it: the panel learns the project and the master,
    // stands in the row, the row is laid out, and the panel receives `input` (a plain input when null).
    ChainableViewController& start(std::unique_ptr<ChainableViewController> first,
                                   const ChainableInput* input = nullptr);

    // One step on from `from`: the panel behind it is fed afresh (a new one from createNext when
    // `from` is the last and `create` is true) and every panel further right goes. A `from` not in
    // the row only lays the row out; the last panel with `create` false changes nothing at all.
    virtual void next(ChainableViewController* from, const ChainableInput& input, bool create);
    // `replacement` takes the place of `old` and of everything behind it, and receives `input` or,
    // without one, a plain input with the project and this master.
    virtual void replace(ChainableViewController* old, std::unique_ptr<ChainableViewController> replacement,
                         const ChainableInput* input = nullptr);
    // Every panel behind `controller` goes; the row is laid out again when asked.
    virtual void removeFollowing(ChainableViewController* controller, bool relayout);
    // `controller` and every panel behind it go; nothing when it is not in the row.
    virtual void removeFrom(ChainableViewController* controller);
    // Widths by each panel's weight and cap, panels side by side from the left.
    virtual void layoutPanels();
    // Empties the row and asks the main window to hide its sub container.
    virtual void closeAll();

    void setTitle(const QString& title);
    [[nodiscard]] std::vector<ChainableViewController*> controllersChain() const;
    // The space the row leaves at its trailing side after the last layout.
    [[nodiscard]] double trailingSpace() const noexcept { return m_trailingSpace; }
    [[nodiscard]] QWidget* viewsContainer() const noexcept { return m_viewsContainer; }
    [[nodiscard]] project::SharedStuff* sharedstuff() const noexcept { return m_sharedstuff; }

signals:
    // The chain was closed: the main window shows its boxes again (its switchSubcontainer with "").
    void closeRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    ChainableViewController& adopt(std::unique_ptr<ChainableViewController> panel);
    void dismiss(std::vector<std::unique_ptr<ChainableViewController>> panels);

    project::SharedStuff* m_sharedstuff = nullptr; // does not own
    app::PanelChain<ChainableViewController> m_chain;
    QLabel* m_titleLabel = nullptr;
    QToolButton* m_closeButton = nullptr;
    QScrollArea* m_scrollArea = nullptr;
    QWidget* m_viewsContainer = nullptr;
    double m_trailingSpace = 0.0;
};

} // namespace lumbra::shell
