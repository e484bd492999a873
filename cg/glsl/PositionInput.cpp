#include "glsl/PositionInput.h"

#include <algorithm>
#include <optional>
#include <set>

namespace orlocg {

namespace {

/// A variable, null for what the entry gives back, and the path of a part of it.
struct Place {
    const Variable* variable = nullptr;
    std::string below;

    bool operator<(const Place& other) const {
        return variable != other.variable ? variable < other.variable : below < other.below;
    }
};

bool startsWithPart(std::string_view path, std::string_view whole) {
    return path.starts_with(whole) && (path.size() == whole.size() || path[whole.size()] == '.');
}

/// What is assigned to what in a function, whatever it is that decides whether.
class Flows {
public:
    explicit Flows(const Function& function) { add(*function.body); }

    /// Those that reach a place directly.
    std::vector<Place> into(const Place& place) const {
        std::vector<Place> found;
        for (const Flow& flow : fAll)
            if (flow.to.variable == place.variable &&
                (startsWithPart(flow.to.below, place.below) || startsWithPart(place.below, flow.to.below)))
                for (Place from : flow.from) {
                    // A part of what is copied as a whole.
                    if (flow.isCopy && place.below.size() > flow.to.below.size())
                        from.below += place.below.substr(flow.to.below.size());
                    found.push_back(std::move(from));
                }
        return found;
    }

private:
    struct Flow {
        Place to;
        std::vector<Place> from;
        bool isCopy;
    };

    static std::optional<Place> placeOf(const Expression& e) {
        using Kind = Expression::Kind;
        std::string path;
        const Expression* root = &e;
        for (; root->kind == Kind::Member || root->kind == Kind::Index || root->kind == Kind::Swizzle;
             root = root->operands[0].get())
            path = root->kind == Kind::Member ? joined({".", root->text, path}) : std::string();
        return root->kind == Kind::Name ? std::optional(Place{root->variable, path}) : std::nullopt;
    }

    static void read(const Expression& e, std::vector<Place>& places) {
        if (std::optional<Place> place = placeOf(e))
            return places.push_back(std::move(*place));
        for (const ExpressionPtr& operand : e.operands)
            read(*operand, places);
    }

    void flow(const Place& to, const Expression& from) {
        const bool makesStruct = from.kind == Expression::Kind::Call && from.constructs &&
                                 from.type->isStruct() &&
                                 from.operands.size() == from.type->structure->members.size();
        for (size_t i = 0; makesStruct && i < from.operands.size(); ++i)
            flow({to.variable, to.below + "." + from.type->structure->members[i].name}, *from.operands[i]);
        if (makesStruct)
            return;
        std::vector<Place> places;
        read(from, places);
        fAll.push_back({to, std::move(places), from.type && from.type->isStruct()});
    }

    void add(const Expression& e) {
        using Kind = Expression::Kind;
        for (const ExpressionPtr& operand : e.operands)
            add(*operand);
        const bool assigns = e.kind == Kind::Binary && e.text.ends_with('=') &&
                             (e.text == "=" || e.text.size() > 1) && e.text != "==" && e.text != "!=" &&
                             e.text != "<=" && e.text != ">=";
        if (assigns)
            if (const std::optional<Place> to = placeOf(*e.operands[0]))
                flow(*to, *e.operands[1]);
        if (e.kind != Kind::Call || !e.function)
            return;
        std::vector<Place> given;
        for (const ExpressionPtr& operand : e.operands)
            read(*operand, given);
        for (size_t i = 0; i < e.operands.size(); ++i)
            if (e.function->parameters[i]->direction != Direction::In)
                if (const std::optional<Place> to = placeOf(*e.operands[i]))
                    fAll.push_back({*to, given, false});
    }

    void add(const Statement& s) {
        for (const std::unique_ptr<Variable>& variable : s.variables)
            if (variable->initializer)
                flow({variable.get(), ""}, *variable->initializer);
        for (const std::unique_ptr<Statement>& each : s.statements)
            add(*each);
        if (s.step)
            add(*s.step);
        if (s.condition)
            add(*s.condition);
        for (const ExpressionPtr& condition : s.elseConditions)
            add(*condition);
        if (s.condition && s.kind == Statement::Kind::Return)
            flow({}, *s.condition);
    }

    std::vector<Flow> fAll;
};

} // namespace

size_t findPositionInput(const Function& entry, const std::string& position,
                         const std::vector<std::string>& inputs) {
    constexpr size_t kMostPlaces = 1000;
    const auto placeAt = [&](const std::string& path) {
        const size_t dot = std::min(path.find('.'), path.size());
        const auto owner = std::find_if(
            entry.parameters.begin(), entry.parameters.end(),
            [&](const std::unique_ptr<Variable>& each) { return path.compare(0, dot, each->name) == 0; });
        return Place{owner == entry.parameters.end() ? nullptr : owner->get(), path.substr(dot)};
    };
    const Flows flows(entry);
    std::vector<Place> reached = {placeAt(position)};
    std::set<Place> known(reached.begin(), reached.end());
    for (size_t next = 0; next < reached.size() && reached.size() < kMostPlaces; ++next)
        for (const Place& from : flows.into(Place(reached[next])))
            if (known.insert(from).second)
                reached.push_back(from);
    for (const Place& place : reached)
        for (size_t i = 0; i < inputs.size(); ++i)
            if (place.variable && (startsWithPart(inputs[i], place.variable->name + place.below) ||
                                   startsWithPart(place.variable->name + place.below, inputs[i])))
                return i;
    return 0;
}

} // namespace orlocg
