#include "chain/chainable_view_controller.h"

#include "base/console.h"
#include "chain/chainable_master.h"

namespace lumbra::shell {

ChainableMaster* ChainableViewController::master() const noexcept {
    return m_master.data();
}

ChainableViewController::ChainableViewController(QWidget* parent) : QWidget(parent) {
}

void ChainableViewController::receive(const ChainableInput& input) {
    attach(input.sharedstuff, input.master);
}

std::unique_ptr<ChainableViewController> ChainableViewController::createNext() {
    base::printLine(
        "called createNext from class ChainableViewController. Did you forget to override the function?");
    return std::make_unique<ChainableViewController>();
}

void ChainableViewController::receiveBack(const ChainableInput&) {
    base::printLine("called receiveBack() on superclass \"ChainableViewController\". It is likely that this "
                    "behavior is not desired. Did you forget to override the method?");
}

void ChainableViewController::sendBack(const ChainableInput& input) {
    ChainableMaster* holder = master();
    if (holder == nullptr) {
        return;
    }
    const auto chain = holder->controllersChain();
    for (std::size_t i = 1; i < chain.size(); ++i) {
        if (chain[i] == this) {
            chain[i - 1]->receiveBack(input);
            holder->layoutPanels();
            return;
        }
    }
}

void ChainableViewController::attach(project::SharedStuff* sharedstuff, ChainableMaster* master) {
    m_sharedstuff = sharedstuff;
    m_master = master;
}

} // namespace lumbra::shell
