#include "../../core/project/project_test_support.h"
#include "chain/chainable_master.h"
#include "chain/picker_popup.h"
#include "chain/tree_pickers.h"
#include "demo_panel.h"
#include "project/shared_stuff.h"
#include "shell_test_support.h"

#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

using lumbra::shell::BinSetter;
using lumbra::shell::BinTreeEntriesSelector;
using lumbra::shell::ChainableInput;
using lumbra::shell::ChainableMaster;
using lumbra::shell::ChainableViewController;
using lumbra::shell::LayoutSetter;
using lumbra::shell::LayoutSetterMixed;
using lumbra::shell::StringChainableInput;
using lumbra::shell::testing::DemoPanel;
using Columns = std::vector<std::string>;

namespace {

DemoPanel* panelAt(const ChainableMaster& master, std::size_t index) {
    const auto chain = master.controllersChain();
    return index < chain.size() ? static_cast<DemoPanel*>(chain[index]) : nullptr;
}

void flushDeletes() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// Records what pickers answer.
class Caller : public lumbra::shell::LayoutSettable,
               public lumbra::shell::LayoutSettableMixed,
               public lumbra::shell::BinSettable,
               public lumbra::shell::BinTreeEntriesSettable {
public:
    void setLayout(const std::shared_ptr<lumbra::tables::ColumnsLayout>& layout, int tag) override {
        answers.push_back("layout " + layout->name + " " + std::to_string(tag));
    }
    void setBin(lumbra::project::Bin* bin, int tag) override {
        answers.push_back("bin " + bin->displayName() + " " + std::to_string(tag));
    }
    void setColumns(const std::vector<std::string>& columns, int tag, const std::string& name) override {
        answers.push_back("columns " + name + " " + std::to_string(tag) + " " +
                          std::to_string(columns.size()));
    }
    void setBinTreeEntries(const std::vector<lumbra::project::TreeNode>& entries) override {
        std::string text = "entries";
        for (const auto& entry : entries) {
            text += " " + entry->name();
        }
        answers.push_back(text);
    }
    std::vector<std::string> answers;
};

QTreeWidgetItem* findItem(QTreeWidget* tree, const QString& text) {
    const auto found = tree->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
    return found.isEmpty() ? nullptr : found.first();
}

void clickItem(QTreeWidget* tree, QTreeWidgetItem* item) {
    QVERIFY(item);
    tree->scrollToItem(item);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(item).center());
}

} // namespace

class ChainableMasterTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        m_stuff = std::make_unique<lumbra::project::SharedStuff>();
        m_stuff->autosave = false;
    }

    void threePanelsGoBackReplaceAndClose() {
        std::vector<std::string> created;
        ChainableMaster master(*m_stuff);
        master.setTitle(QStringLiteral("Merge"));
        master.resize(1000, 420);
        master.show();
        QVERIFY(QTest::qWaitForWindowExposed(&master));

        auto& first = static_cast<DemoPanel&>(
            master.start(std::make_unique<DemoPanel>("A", 1.0, 33.333333333333336, &created)));
        QCOMPARE(first.received, 1);
        // A lone capped panel: (1000 - 20) / 3, the rest at the trailing side.
        QCOMPARE(first.width(), 326);
        QVERIFY(qAbs(master.trailingSpace() - (1000.0 - 980.0 / 3.0 - 10.0)) < 1e-6);

        QTest::mouseClick(first.nextButton, Qt::LeftButton);
        QTest::mouseClick(panelAt(master, 1)->nextButton, Qt::LeftButton);
        QCOMPARE(created, (Columns{"A", "A+", "A++"}));
        QCOMPARE(master.controllersChain().size(), std::size_t(3));
        QCOMPARE(panelAt(master, 2)->lastInput, std::string("from A+"));
        // Weights 1, 2, 3 share 980 points: 163.3, 326.7, 490.
        QCOMPARE(panelAt(master, 2)->geometry(), QRect(490, 0, 490, panelAt(master, 2)->height()));
        QVERIFY(panelAt(master, 2)->layouts > 0);

        // Forward again from the first panel: the second stays and is fed afresh, the third goes.
        QPointer<DemoPanel> second = panelAt(master, 1);
        QPointer<DemoPanel> third = panelAt(master, 2);
        QTest::mouseClick(first.nextButton, Qt::LeftButton);
        flushDeletes();
        QCOMPARE(master.controllersChain().size(), std::size_t(2));
        QCOMPARE(panelAt(master, 1), second.data());
        QCOMPARE(second->received, 2);
        QVERIFY(third.isNull());
        QCOMPARE(second->width(), 653);

        // The last panel going on with create false: nothing at all.
        const int layoutsBefore = second->layouts;
        StringChainableInput input;
        master.next(second, input, false);
        QCOMPARE(master.controllersChain().size(), std::size_t(2));
        QCOMPARE(second->layouts, layoutsBefore);

        // A result handed back reaches the panel before; the first has nobody to hand to.
        input.string = "stats";
        second->sendBack(input);
        QCOMPARE(first.backInput, std::string("stats"));

        // Replaced without an input: the new panel still knows its project and master.
        master.replace(second, std::make_unique<DemoPanel>("D", 1.0, 50.0, &created));
        flushDeletes();
        QVERIFY(second.isNull());
        DemoPanel* replacement = panelAt(master, 1);
        QCOMPARE(replacement->lastInput, std::string("<plain>"));
        QCOMPARE(replacement->sharedstuff(), m_stuff.get());
        QCOMPARE(replacement->width(), 490);

        QSignalSpy closed(&master, &ChainableMaster::closeRequested);
        QTest::mouseClick(master.findChild<QToolButton*>(QStringLiteral("closeButton")), Qt::LeftButton);
        QCOMPARE(closed.count(), 1);
        QVERIFY(master.controllersChain().empty());
        master.closeAll();
        QCOMPARE(closed.count(), 2);
    }

    // Each picker pops up under its button, answers its caller with the row chosen, and goes.
    void pickersAnswerTheirCallerAndGo() {
        auto group = lumbra::project::testing::makeGroup("Shoot");
        group->addBin(lumbra::project::testing::makeBin("Day 1", m_stuff.get()));
        group->addBin(lumbra::project::testing::makeBin("Day 2", m_stuff.get()));
        m_stuff->bins->addChild(group);
        m_stuff->bins->addBin(lumbra::project::testing::makeBin("Extras", m_stuff.get()));
        for (const char* name : {"Day cols", "Sound", "Daylight"}) {
            m_stuff->projectLayouts.layouts.push_back(std::make_shared<lumbra::tables::ColumnsLayout>(name));
        }
        QPushButton button(QStringLiteral("Source"));
        button.show();
        Caller caller;

        QPointer<LayoutSetter> picker = new LayoutSetter(&button);
        picker->setup(*m_stuff, &caller, 7);
        picker->popUp(&button);
        QVERIFY(QTest::qWaitForWindowExposed(picker));
        QTest::keyClicks(picker->searchField(), QStringLiteral("DAY"));
        QStringList shown;
        for (int row = 0; row < picker->list()->count(); ++row) {
            if (!picker->list()->item(row)->isHidden()) {
                shown << picker->list()->item(row)->text();
            }
        }
        QCOMPARE(shown, (QStringList{QStringLiteral("Day cols"), QStringLiteral("Daylight")}));
        QTest::keyClicks(picker->searchField(), QStringLiteral("L"));
        QTest::keyClick(picker->searchField(), Qt::Key_Return);

        QPointer<LayoutSetterMixed> mixed = new LayoutSetterMixed(&button);
        mixed->setup(*m_stuff, &caller, 3, true);
        mixed->popUp(&button);
        QTest::keyClicks(mixed->searchField(), QStringLiteral("nothing like it"));
        QVERIFY(findItem(mixed->tree(), QStringLiteral("Sound")) == nullptr);
        QVERIFY(findItem(mixed->tree(), QStringLiteral("Project Bins")) != nullptr);
        clickItem(mixed->tree(), findItem(mixed->tree(), QStringLiteral("Any Column")));

        QPointer<BinSetter> bins = new BinSetter(&button);
        bins->setup(*m_stuff, &caller, 5);
        bins->popUp(&button);
        clickItem(bins->tree(), findItem(bins->tree(), QStringLiteral("Day 1")));

        // Check boxes: the user ticks the group, and the bin that was missing joins; the group itself does
        // not.
        QPointer<BinTreeEntriesSelector> selector = new BinTreeEntriesSelector(&button);
        selector->setup(*m_stuff, &caller, {group->children[1]}, true);
        selector->popUp(&button);
        QTreeWidget* tree = selector->binsTree();
        QCOMPARE(findItem(tree, QStringLiteral("Shoot"))->checkState(0), Qt::PartiallyChecked);
        findItem(tree, QStringLiteral("Shoot"))->setCheckState(0, Qt::Checked);
        QCOMPARE(findItem(tree, QStringLiteral("Day 1"))->checkState(0), Qt::Checked);
        findItem(tree, QStringLiteral("Extras"))->setCheckState(0, Qt::Checked);
        QTest::mouseClick(selector->selectButton(), Qt::LeftButton);

        QCOMPARE(caller.answers.size(), std::size_t(4));
        QCOMPARE(caller.answers[0], std::string("layout Daylight 7"));
        QVERIFY(caller.answers[1].starts_with("columns Any Columns 3 "));
        QCOMPARE(caller.answers[2], std::string("bin Day 1 5"));
        QCOMPARE(caller.answers[3], std::string("entries Day 2 Day 1 Extras"));
        flushDeletes();
        QVERIFY(picker.isNull() && mixed.isNull() && bins.isNull() && selector.isNull());
    }

private:
    std::unique_ptr<lumbra::project::SharedStuff> m_stuff;
};

QTEST_MAIN(ChainableMasterTest)
#include "chainable_master_test.moc"
