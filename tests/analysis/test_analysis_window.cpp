#include <QtTest>
class TestAnalysisWindow : public QObject
{
    Q_OBJECT
};
QTEST_MAIN(TestAnalysisWindow)
#include "test_analysis_window.moc"
