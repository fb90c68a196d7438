#pragma once

#include "chain/chainable_input.h"

#include <QPointer>
#include <QWidget>
#include <memory>

namespace lumbra::project {
class SharedStuff;
}

namespace lumbra::shell {

class ChainableMaster;

// One step of a multi-step tool, standing in a chain's row. A panel learns its project and master
// from the input it receives, goes forward with master()->next(this, input, true) and hands a
// result back to the panel before it with sendBack.
class ChainableViewController : public QWidget {
    Q_OBJECT

public:
    explicit ChainableViewController(QWidget* parent = nullptr);

    // Keeps the input's project and master; an override calls this first.
    virtual void receive(const ChainableInput& input);
    // The panel that comes after this one; the plain one prints that it was not overridden.
    [[nodiscard]] virtual std::unique_ptr<ChainableViewController> createNext();
    [[nodiscard]] virtual double widthWeight() const { return 1.0; }
    [[nodiscard]] virtual double maxWidthPercent() const { return 100.0; }
    // A result from the panel behind; the plain one prints that it was not overridden.
    virtual void receiveBack(const ChainableInput& input);
    // Hands the input to the panel before this one and lays the row out; nothing for the first panel.
    void sendBack(const ChainableInput& input);
    // Called by the master once the panel has its frame.
    virtual void afterLayout() {}

    [[nodiscard]] project::SharedStuff* sharedstuff() const noexcept { return m_sharedstuff; }
    // Defined beside the master's class, so callers need not include it.
    [[nodiscard]] ChainableMaster* master() const noexcept;
    // What the main window sets on the first panel before it stands in the row.
    void attach(project::SharedStuff* sharedstuff, ChainableMaster* master);

private:
    project::SharedStuff* m_sharedstuff = nullptr; // does not own
    QPointer<ChainableMaster> m_master;
};

} // namespace lumbra::shell
