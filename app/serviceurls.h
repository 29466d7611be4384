#pragma once

#include <QList>
#include <QUrl>

// Where the web spot services live, and where spots are posted. The defaults
// are the public services; tests hand in a local server instead.
struct ServiceUrls
{
    QUrl pota;
    QUrl sota;
    QUrl wwff;
    QUrl wwbota;
    QUrl gma;
    // The programmes' position services for parks and summits.
    QUrl parkPositions;
    QUrl summitPositions;
    QUrl zlota;
    QUrl parksnpeaks;
    // Whole addresses (path included) that take a spot by JSON POST.
    QUrl potaSpotPost;
    QUrl wwbotaSpotPost;
    QUrl qrzLogbook; // the QRZ Logbook API, whole address

    static ServiceUrls defaults();
    // Every service on one base URL (scheme, host and port); QRZ's API at its path "/api".
    static ServiceUrls allAt(const QUrl &base);
    // Every address the program may send a spot to.
    QList<QUrl> postingUrls() const { return {potaSpotPost, wwbotaSpotPost}; }
};
