#pragma once

#include <Qt>

#include <optional>

// What the operator's keys do.
enum class OperatorAction {
    Tune,
    MarkHeard,
    MarkNotHeard,
    Log,
    LogWithDialog, // the log dialog, whatever the settings say
    Spot,
    NextSpot,
    PreviousSpot,
};

// The operator's keys, in one table: the window acts on them, and the spot
// table hands them on instead of searching by them. In the search field they
// are text. Adding a key is one row of the table in operatorkeys.cpp.
struct OperatorKey
{
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
    OperatorAction action;
    // The action works on the selected spot, so without one the key does nothing.
    bool needsSelection;
};

// The action of a key press, or none for a key that is not the operator's.
std::optional<OperatorKey> operatorKeyFor(int key, Qt::KeyboardModifiers modifiers);
