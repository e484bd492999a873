#pragma once

#include <optional>
#include <span>

#include <X11/X.h>

namespace orloview {

/// What a key does in the window.
enum class Command {
    Fit,
    Front,
    Back,
    Right,
    Left,
    Top,
    Bottom,
    Home,
    Orthographic,
    Wireframe,
    Lights,
    Culling,
    Grid,
    Axes,
    Ground,
    AmbientOcclusion,
    Sky,
    Edges,
    Tree,
    Warnings,
    Exposure,
    Measure,
    Clip,
    Statistics,
    PlayOrStop,
    StepBack,
    StepOn,
    Slower,
    Faster,
    NextAnimation,
    TurnLeft,
    TurnRight,
    TurnUp,
    TurnDown,
    Nearer,
    Farther,
    NextCamera,
    NextFile,
    PreviousFile,
    Reload,
    Screenshot,
    PrintSwitches,
    Help,
    Stop,
    Quit,
};

/// A line of the help overlay.
struct CommandHelp {
    Command command;
    const char* keys;
    const char* text;
};

/// Every command with its keys, in the order in which to list them; those that differ in direction only share
/// a line.
std::span<const CommandHelp> commandHelp();

/// What the mouse does, in the same form.
struct MouseHelp {
    const char* action;
    const char* text;
};
std::span<const MouseHelp> mouseHelp();

/// The command of a key, by its symbol (letters in either case, the number pad with and without Num Lock) and
/// the modifiers held.
std::optional<Command> commandOf(KeySym key, unsigned modifiers);

} // namespace orloview
