#pragma once

class QMainWindow;
class QSplitter;
class SpotTable;
struct AppSettings;

// What the settings file keeps of the window's arrangement: geometry, dock
// and toolbar state, the splitter between table and detail panel, and the
// table's sort.
namespace WindowLayout {

// A first start, or geometry the screen cannot take, gets 1200 by 680.
void restore(QMainWindow &window, SpotTable &table, QSplitter &splitter, const AppSettings &settings);
void capture(const QMainWindow &window, const SpotTable &table, const QSplitter &splitter,
             AppSettings &settings);
void applyDefaultSize(QMainWindow &window);

} // namespace WindowLayout
