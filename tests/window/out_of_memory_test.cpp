#include <QLabel>
#include <QtTest>

#include "playback/SharedState.h"
#include "support/FailingAllocator.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::currentSound;
using zemo::test::FailingMemory;
using zemo::test::loadSound;
using zemo::test::MemoryFault;
using zemo::test::SparedMemory;
using zemo::test::WindowUnderTest;

namespace {

constexpr std::size_t kSamples = 400000;
constexpr std::size_t kOnlySounds = 1000000; ///< bytes

} // namespace

/// Memory runs out within a transformation; the window's own is Qt's, and is there.
class OutOfMemoryTest : public QObject {
    Q_OBJECT
private slots:
    void isSaidInOneSentence_data() {
        QTest::addColumn<std::size_t>("after");
        QTest::addColumn<std::size_t>("atLeastBytes");
        QTest::addColumn<bool>("onTheWorkersThread");
        QTest::newRow("the new sound") << std::size_t{0} << kOnlySounds << false;
        QTest::newRow("a small block of the work") << std::size_t{0} << std::size_t{0} << true;
        QTest::newRow("the next one") << std::size_t{1} << std::size_t{0} << true;
    }
    void isSaidInOneSentence() {
        QFETCH(const std::size_t, after);
        QFETCH(const std::size_t, atLeastBytes);
        QFETCH(const bool, onTheWorkersThread);
        WindowUnderTest zemo;
        const std::vector<float> sound(kSamples, 0.25F);
        loadSound(sound);
        zemo.delegate.ustruct.buf = allocateSamples(1);
        zemo.delegate.ustruct.bufsize = 1;
        zemo.delegate.AMDialog(nullptr);
        zemo.delegate.amFreqTextField->setText("440");
        zemo.delegate.amIndexTextField->setText("1");
        zemo.delegate.amSegment->setSelectedSegment(1);
        auto* const result = zemo.delegate.window->findChild<QLabel*>("resultValue");
        {
            const std::unique_ptr<SparedMemory> thisThread(onTheWorkersThread ? new SparedMemory
                                                                              : nullptr);
            const FailingMemory failing({.after = after, .atLeastBytes = atLeastBytes});
            zemo.delegate.amOkButton->click();
            QVERIFY(failing.hasFailed());
        }
        QCOMPARE(result->text(), "There is not enough memory for this transformation.");
        QVERIFY(zemo.platform.alert.shown.empty());
        QVERIFY(currentSound() == sound);
        QCOMPARE(zemo.delegate.ustruct.bufsize, 1);

        zemo.delegate.AMDialog(nullptr); // and with memory it goes on
        zemo.delegate.amOkButton->click();
        QCOMPARE(result->text(), "Done");
        QVERIFY(currentSound() != sound);
    }
};

QTEST_MAIN(OutOfMemoryTest)
#include "out_of_memory_test.moc"
