#include "window/Commands.h"

#include <X11/keysym.h>

namespace orloview {

namespace {

// Numbers, Home, F and H as in the well-known modelling programs and viewers.
constexpr CommandHelp kCommandHelp[] = {
    {Command::Fit, "F, Enter", "fit the scene"},
    {Command::Front, "1", "from the front (Ctrl: back)"},
    {Command::Right, "3", "from the right (Ctrl: left)"},
    {Command::Top, "7", "from the top (Ctrl: bottom)"},
    {Command::Home, "Home", "the first view"},
    {Command::TurnLeft, "arrows", "turn by 15 degrees"},
    {Command::Nearer, "+ -", "nearer, farther"},
    {Command::Orthographic, "5", "orthographic"},
    {Command::Wireframe, "W", "wireframe"},
    {Command::Lights, "L", "lights"},
    {Command::Culling, "K", "culling of back faces"},
    {Command::Grid, "G", "grid"},
    {Command::Axes, "X", "axes"},
    {Command::Ground, "D", "shade on the ground"},
    {Command::AmbientOcclusion, "O", "ambient occlusion"},
    {Command::Sky, "B", "sky behind the model"},
    {Command::Edges, "E", "edges over what is drawn"},
    {Command::Exposure, "T", "slider for the exposure"},
    {Command::Clip, "V", "cut along x, y, z, or not"},
    {Command::Tree, "I", "the tree of the scene"},
    {Command::Warnings, "N", "what was left out of the file"},
    {Command::Measure, "M", "measure between two clicks"},
    {Command::Statistics, "S", "statistics"},
    {Command::NextCamera, "C", "the file's next camera"},
    {Command::NextFile, "PgDn, PgUp", "the folder's next, previous file"},
    {Command::Reload, "R", "read the file again"},
    {Command::PlayOrStop, "Space", "play what moves, or stop it"},
    {Command::StepOn, ", .", "a step back, a step on"},
    {Command::Slower, "[ ]", "half as fast, twice as fast"},
    {Command::NextAnimation, "A", "the next animation"},
    {Command::Screenshot, "F12", "write a screenshot"},
    {Command::PrintSwitches, "?", "print the switches of this view"},
    {Command::Help, "H, F1", "this list"},
    {Command::Stop, "Escape", "stop reading, or quit"},
    {Command::Quit, "Q", "quit"},
};

constexpr MouseHelp kMouseHelp[] = {
    {"left", "turn; on a slider: drag"},
    {"double click", "name a part"},
    {"middle, Shift+left", "move"},
    {"wheel", "nearer, farther, at the cursor"},
};

struct Binding {
    KeySym key;
    Command command;
    std::optional<Command> withControl;
};

constexpr Binding kBindings[] = {
    {XK_f, Command::Fit, {}},
    {XK_Return, Command::Fit, {}},
    {XK_KP_Enter, Command::Fit, {}},
    {XK_1, Command::Front, Command::Back},
    {XK_KP_1, Command::Front, Command::Back},
    {XK_KP_End, Command::Front, Command::Back},
    {XK_3, Command::Right, Command::Left},
    {XK_KP_3, Command::Right, Command::Left},
    {XK_KP_Next, Command::Right, Command::Left},
    {XK_7, Command::Top, Command::Bottom},
    {XK_KP_7, Command::Top, Command::Bottom},
    {XK_KP_Home, Command::Top, Command::Bottom},
    {XK_Home, Command::Home, {}},
    {XK_5, Command::Orthographic, {}},
    {XK_KP_5, Command::Orthographic, {}},
    {XK_KP_Begin, Command::Orthographic, {}},
    {XK_w, Command::Wireframe, {}},
    {XK_l, Command::Lights, {}},
    {XK_k, Command::Culling, {}},
    {XK_c, Command::NextCamera, {}},
    {XK_Next, Command::NextFile, {}},
    {XK_Prior, Command::PreviousFile, {}},
    {XK_r, Command::Reload, {}},
    {XK_g, Command::Grid, {}},
    {XK_x, Command::Axes, {}},
    {XK_d, Command::Ground, {}},
    {XK_o, Command::AmbientOcclusion, {}},
    {XK_b, Command::Sky, {}},
    {XK_e, Command::Edges, {}},
    {XK_t, Command::Exposure, {}},
    {XK_i, Command::Tree, {}},
    {XK_v, Command::Clip, {}},
    {XK_n, Command::Warnings, {}},
    {XK_m, Command::Measure, {}},
    {XK_s, Command::Statistics, {}},
    {XK_space, Command::PlayOrStop, {}},
    {XK_comma, Command::StepBack, {}},
    {XK_period, Command::StepOn, {}},
    {XK_bracketleft, Command::Slower, {}},
    {XK_bracketright, Command::Faster, {}},
    {XK_a, Command::NextAnimation, {}},
    {XK_Left, Command::TurnLeft, {}},
    {XK_Right, Command::TurnRight, {}},
    {XK_Up, Command::TurnUp, {}},
    {XK_Down, Command::TurnDown, {}},
    {XK_plus, Command::Nearer, {}},
    {XK_equal, Command::Nearer, {}},
    {XK_KP_Add, Command::Nearer, {}},
    {XK_minus, Command::Farther, {}},
    {XK_KP_Subtract, Command::Farther, {}},
    {XK_F12, Command::Screenshot, {}},
    {XK_question, Command::PrintSwitches, {}},
    {XK_h, Command::Help, {}},
    {XK_F1, Command::Help, {}},
    {XK_q, Command::Quit, Command::Quit},
    {XK_Escape, Command::Stop, {}},
};

} // namespace

std::span<const CommandHelp> commandHelp() {
    return kCommandHelp;
}

std::span<const MouseHelp> mouseHelp() {
    return kMouseHelp;
}

std::optional<Command> commandOf(KeySym key, unsigned modifiers) {
    if (key >= XK_A && key <= XK_Z)
        key += XK_a - XK_A;
    for (const Binding& binding : kBindings) {
        if (binding.key != key)
            continue;
        if (modifiers & Mod1Mask) // Alt belongs to the window manager
            return std::nullopt;
        return modifiers & ControlMask ? binding.withControl : std::optional(binding.command);
    }
    return std::nullopt;
}

} // namespace orloview
