#include "import/TableReader.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <string>
#include <utility>

#include "base/ImportError.h"
#include "base/Text.h"
#include "import/MeshCheck.h"
#include "import/Warnings.h"

namespace orloview {

namespace {

/// What parts the columns of a line.
class Splitter {
public:
    explicit Splitter(std::string_view firstLine) {
        for (const char separator : {',', ';'})
            if (fSeparator == ' ' && firstLine.find(separator) != firstLine.npos)
                fSeparator = separator;
    }

    /// Takes the next cell off the front of the line, without blanks and quotes around it. None at the end.
    std::optional<std::string_view> take(std::string_view& line) const {
        std::string_view cell;
        if (fSeparator == ' ') {
            cell = takeWord(line);
            if (cell.empty())
                return std::nullopt;
        } else {
            if (!line.data()) // the cell before was the last
                return std::nullopt;
            const size_t end = line.find(fSeparator);
            cell = trimmed(line.substr(0, end));
            line = end == line.npos ? std::string_view() : line.substr(end + 1);
        }
        const bool quoted = cell.size() >= 2 && cell.front() == '"' && cell.back() == '"';
        return quoted ? cell.substr(1, cell.size() - 2) : cell;
    }

private:
    char fSeparator = ' ';
};

std::string_view withoutMark(std::string_view text) {
    return text.starts_with("\xEF\xBB\xBF") ? text.substr(3) : text;
}

/// The first line that says something, without a # that makes it a comment to other programs.
std::string_view takeTitle(std::string_view& text, size_t& lines) {
    while (!text.empty()) {
        ++lines;
        std::string_view line = trimmed(takeLine(text));
        while (line.starts_with('#'))
            line = trimmed(line.substr(1));
        if (!line.empty())
            return line;
    }
    return {};
}

std::vector<std::string_view> namesIn(std::string_view title) {
    const Splitter splitter(title);
    std::vector<std::string_view> names;
    while (const auto name = splitter.take(title))
        names.push_back(*name);
    return names;
}

std::optional<size_t> find(const std::vector<std::string_view>& names,
                           std::initializer_list<std::string_view> spellings) {
    for (size_t i = 0; i < names.size(); ++i)
        for (const std::string_view spelling : spellings)
            if (lowered(names[i]) == lowered(spelling))
                return i;
    return std::nullopt;
}

/// Colours of bytes as shares of 1, alpha by itself: some files have it from 0 to 1 beside bytes.
void scaleColors(std::vector<float>& colors) {
    constexpr float kFull = 255.0F;
    bool areBytes = false;
    bool isAlphaByte = false;
    for (size_t i = 0; i < colors.size(); ++i)
        (i % 4 == 3 ? isAlphaByte : areBytes) |= colors[i] > 1.0F;
    for (size_t i = 0; i < colors.size(); ++i)
        if (i % 4 == 3 ? isAlphaByte : areBytes)
            colors[i] /= kFull;
}

class TableParser {
public:
    TableParser(std::string_view file, const ProgressReport& report)
        : fReport(report), fLength(file.size()), fRest(withoutMark(file)), fTitle(takeTitle(fRest, fLine)),
          fSplitter(fTitle), fNames(namesIn(fTitle)), fRow(fNames.size()) {}

    Scene read() {
        addColumns();
        std::string_view line;
        while (takeRow(line)) {
            readRow(line);
            for (const Column& column : fColumns)
                column.to->push_back(column.from ? fRow[*column.from] : column.instead);
        }
        return takeScene();
    }

private:
    /// Where the values of one component go.
    struct Column {
        std::optional<size_t> from;
        std::vector<float>* to;
        float instead = 0.0F;
    };

    void addColumns();
    void add(std::initializer_list<std::initializer_list<std::string_view>> components,
             std::vector<float>& to, float instead);
    bool takeRow(std::string_view& line);
    void readRow(std::string_view line);
    Scene takeScene();
    [[noreturn]] void wrong(const std::string& what) const {
        throw ImportError("line " + std::to_string(fLine) + what + "; correct the line or take it out");
    }

    const ProgressReport& fReport;
    size_t fLength;
    std::string_view fRest;
    size_t fLine = 0; ///< of the file, from 1
    std::string_view fTitle;
    Splitter fSplitter;
    std::vector<std::string_view> fNames;
    std::vector<float> fRow;
    std::vector<Column> fColumns;
    std::vector<bool> fUsed = std::vector<bool>(fNames.size());
    Mesh fPoints;
    Warnings fWarnings;
};

/// Adds a component each; nothing where no column has any of them.
void TableParser::add(std::initializer_list<std::initializer_list<std::string_view>> components,
                      std::vector<float>& to, float instead) {
    std::vector<Column> columns;
    bool any = false;
    for (const auto& spellings : components) {
        const std::optional<size_t> from = find(fNames, spellings);
        columns.push_back({from, &to, instead});
        any = any || from;
        if (from)
            fUsed[*from] = true;
    }
    if (any)
        fColumns.insert(fColumns.end(), columns.begin(), columns.end());
}

void TableParser::addColumns() {
    if (!find(fNames, {"x"}) || !find(fNames, {"y"}) || !find(fNames, {"z"}))
        throw ImportError(
            "its first line names no columns x, y and z; begin it with a line such as \"x y z\"");
    add({{"x"}, {"y"}, {"z"}}, fPoints.positions, 0.0F);
    add({{"r", "red"}, {"g", "green"}, {"b", "blue"}, {"a", "alpha"}}, fPoints.colors, 1.0F);
    add({{"vx"}, {"vy"}, {"vz"}}, fPoints.particles.velocities, 0.0F);
    for (size_t i = 0; i < kParticleValueNames.size(); ++i)
        add({{kParticleValueNames[i]}}, fPoints.particles.values[i], 0.0F);
    for (size_t i = 0; i < fNames.size(); ++i)
        if (!fUsed[i])
            fWarnings.add("the column '" + printable(fNames[i], 40) + "'",
                          "left out: it is of no known kind");
}

bool TableParser::takeRow(std::string_view& line) {
    constexpr size_t kRowsBetweenReports = 4096;
    while (!fRest.empty()) {
        line = trimmed(takeLine(fRest));
        if (++fLine % kRowsBetweenReports == 0)
            tell(fReport, static_cast<double>(fLength - fRest.size()), static_cast<double>(fLength));
        if (!line.empty() && line.front() != '#')
            return true;
    }
    return false;
}

void TableParser::readRow(std::string_view line) {
    size_t count = 0;
    while (const auto cell = fSplitter.take(line)) {
        if (count < fNames.size()) {
            const auto number = toNumber(*cell);
            if (!number && fUsed[count])
                wrong(": '" + printable(*cell, 40) + "' in the column " + printable(fNames[count], 40) +
                      " is no number");
            fRow[count] = toFloat(number.value_or(0.0));
        }
        ++count;
    }
    if (count != fNames.size())
        wrong(" has " + std::to_string(count) + (count == 1 ? " value" : " values") +
              ", and the first line names " + std::to_string(fNames.size()) + " columns");
}

Scene TableParser::takeScene() {
    if (fPoints.positions.empty())
        throw ImportError("there are no points in it, only the names of columns");
    scaleColors(fPoints.colors);
    fPoints.topology = Topology::Points;
    fPoints.indices.resize(fPoints.vertexCount());
    std::iota(fPoints.indices.begin(), fPoints.indices.end(), 0U);
    Scene scene;
    scene.format = "table of points";
    if (makeDrawable(fPoints, "the table", fWarnings)) {
        scene.instances.push_back({"", 0, {}});
        scene.meshes.push_back(std::move(fPoints));
    }
    scene.warnings = fWarnings.lines();
    return scene;
}

} // namespace

bool isTable(std::string_view start) {
    size_t lines = 0;
    std::string_view text = withoutMark(start);
    const std::vector<std::string_view> names = namesIn(takeTitle(text, lines));
    return find(names, {"x"}) && find(names, {"y"}) && find(names, {"z"});
}

Scene readTable(std::span<const std::uint8_t> bytes, const ProgressReport& report) {
    return TableParser({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, report).read();
}

} // namespace orloview
