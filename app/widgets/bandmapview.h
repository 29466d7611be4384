#pragma once

#include <QWidget>

class BandMapCanvas;
class QComboBox;
class SpotFilterProxyModel;

// The band map dock's content: the canvas and a band chooser, which follows
// the rig while it reports a frequency and is the operator's otherwise.
class BandMapView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BandMapView)

public:
    explicit BandMapView(SpotFilterProxyModel *proxy, QWidget *parent = nullptr);
    ~BandMapView() override;

    BandMapCanvas *canvas() const { return m_canvas; }
    // The poll's frequency; 0 when the rig is gone (the chooser is then free).
    void setRigFrequency(double khz);
    void setRegion(int region);
    void setSelectedKey(const QString &key);

signals:
    void spotActivated(const QString &key);
    void tuneRequested(double khz);

private:
    BandMapCanvas *m_canvas;
    QComboBox *m_bandCombo;
};
