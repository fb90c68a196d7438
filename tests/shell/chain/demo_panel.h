#pragma once

#include "chain/chainable_master.h"
#include "chain/chainable_view_controller.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <memory>
#include <string>
#include <vector>

namespace lumbra::shell::testing {

// A step of a made-up tool: a title, a list, and "Next" that hands the next step the title.
class DemoPanel : public ChainableViewController {
public:
    DemoPanel(std::string name, double weight, double cap, std::vector<std::string>* created)
        : m_name(std::move(name)), m_weight(weight), m_cap(cap), m_created(created) {
        setObjectName(QString::fromStdString(m_name));
        auto* layout = new QVBoxLayout(this);
        auto* title = new QLabel(QString::fromStdString(m_name), this);
        auto* list = new QListWidget(this);
        list->addItems({QStringLiteral("Day 1"), QStringLiteral("Day 2"), QStringLiteral("Pickups")});
        nextButton = new QPushButton(QStringLiteral("Next"), this);
        nextButton->setObjectName(QStringLiteral("next"));
        layout->addWidget(title);
        layout->addWidget(list, 1);
        layout->addWidget(nextButton, 0, Qt::AlignRight);
        connect(nextButton, &QPushButton::clicked, this, [this] {
            StringChainableInput input;
            input.sharedstuff = sharedstuff();
            input.master = master();
            input.string = "from " + m_name;
            master()->next(this, input, true);
        });
        if (m_created) {
            m_created->push_back(m_name);
        }
    }

    void receive(const ChainableInput& input) override {
        ChainableViewController::receive(input);
        ++received;
        const auto* text = dynamic_cast<const StringChainableInput*>(&input);
        lastInput = text ? text->string : "<plain>";
    }
    std::unique_ptr<ChainableViewController> createNext() override {
        // Each step makes the next: weight one more, no cap.
        return std::make_unique<DemoPanel>(m_name + "+", m_weight + 1.0, 100.0, m_created);
    }
    [[nodiscard]] double widthWeight() const override { return m_weight; }
    [[nodiscard]] double maxWidthPercent() const override { return m_cap; }
    void receiveBack(const ChainableInput& input) override {
        const auto* text = dynamic_cast<const StringChainableInput*>(&input);
        backInput = text ? text->string : "<plain>";
    }
    void afterLayout() override { ++layouts; }

    QPushButton* nextButton = nullptr;
    int received = 0;
    int layouts = 0;
    std::string lastInput;
    std::string backInput;

private:
    std::string m_name;
    double m_weight;
    double m_cap;
    std::vector<std::string>* m_created;
};

} // namespace lumbra::shell::testing
