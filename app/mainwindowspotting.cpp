#include "app/mainwindow.h"

// Spotting from the window: the dialog, the posting and its answer, and the
// API's "spot.post". The checks and the posting itself are SpotPoster's.

#include "app/dialogs/spotdialog.h"
#include "app/radiostation.h"
#include "app/spotingestor.h"
#include "app/spotsources.h"
#include "app/spotting/spotposter.h"
#include "app/widgets/detailpanel.h"
#include "app/widgets/spottable.h"
#include "model/stationmodel.h"
#include "radio/radiorouter.h"

#include <QPushButton>
#include <QStatusBar>

namespace {

constexpr int k_spotNoticeMs = 6000;

} // namespace

void MainWindow::wireSpotting()
{
    connect(m_spotPoster, &SpotPoster::ownSpotsPosted, this, [this](QList<StationSpot> spots) {
        SpotPoster::describeFromTable(spots, m_model->spots());
        m_sources->ingestor()->addOwnSpots(spots);
    });
    connect(m_ui.detailPanel->spotButton(), &QPushButton::clicked, this, [this] { onSpotStation(true); });
    connect(m_ui.table, &SpotTable::respotRequested, this, [this] { onSpotStation(true); });
    connect(m_ui.spotStation, &QAction::triggered, this, [this] { onSpotStation(false); });
}

void MainWindow::onSpotStation(bool fromSelection)
{
    // Tuned there already: the rig knows the frequency better than the spot.
    const bool radioUp = m_radio->router()->isBridgeActive() || m_radio->router()->isRigConnected();
    const double rigKhz = radioUp ? m_radio->router()->lastFreqKhz() : 0.0;
    SpotRequest prefill;
    if (fromSelection && m_selection.hasSelection()) {
        prefill =
            SpotRequest::fromSpot(spotForKey(m_selection.selectedKey()), rigKhz, m_settings.spotComment);
    } else {
        prefill.frequencyKhz = rigKhz;
        prefill.mode = radioUp ? m_radio->router()->lastMode() : QString();
        prefill.comments = m_settings.spotComment;
    }
    SpotDialog::Checks checks{[this](const SpotRequest &r) { return m_spotPoster->problem(r); },
                              [this](const SpotRequest &r) { return m_spotPoster->isRepeat(r); }, nullptr};
    SpotDialog dialog(prefill, m_spotPoster->loggedInNodes(), !m_settings.callsign.isEmpty(), checks, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const SpotRequest request = dialog.request();
    // The operator has answered the repeat question already.
    m_spotPoster->post(request, true, [this, call = request.callsign](const SpotPoster::Outcome &outcome) {
        statusBar()->showMessage(SpotPoster::outcomeText(call, outcome), k_spotNoticeMs);
    });
}

void MainWindow::apiPostSpot(const ApiSpotPost &post, ApiSpotAnswer answer)
{
    SpotRequest request;
    request.callsign = post.spot.callsign;
    request.frequencyKhz = post.spot.frequencyKhz;
    request.mode = post.spot.mode;
    request.reference = post.spot.reference;
    request.target = post.spot.source;
    request.programme = post.spot.source == StationSpot::DX ? SpotRequest::programmeOf(post.spot.reference)
                                                            : post.spot.source;
    request.comments = post.spot.comments;
    request.qrt = post.qrt;
    m_spotPoster->post(
        request, post.force,
        [this, call = request.callsign, answer = std::move(answer)](const SpotPoster::Outcome &o) {
            // A program's spot in the operator's name is shown once it went out.
            if (o.error.isEmpty())
                statusBar()->showMessage(SpotPoster::outcomeText(call, o), k_spotNoticeMs);
            answer(o.error.isEmpty() ? o.service : QString(), o.error);
        });
}
