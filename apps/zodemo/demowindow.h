#pragma once
// The demo's main window: the probe combo box, the two plots and the
// status-bar progress bar.

#include <QMainWindow>

class CZOSGLXYPlot;
class CZOSStatusProgressBar;
class CZOSXYPlot;
class CZOTreeMenuComboBox;
struct DemoResult;

class DemoWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit DemoWindow(QWidget *parent = nullptr);

    CZOSStatusProgressBar *progressBar() const { return m_pProgress; }
    CZOTreeMenuComboBox *probeCombo() const { return m_pProbes; }
    CZOSXYPlot *profilePlot() const { return m_pProfile; }
    CZOSGLXYPlot *histogramPlot() const { return m_pHistogram; }

    void showResult(const DemoResult &result);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    CZOTreeMenuComboBox *m_pProbes = nullptr;
    CZOSXYPlot *m_pProfile = nullptr;
    CZOSGLXYPlot *m_pHistogram = nullptr;
    CZOSStatusProgressBar *m_pProgress = nullptr;
};
