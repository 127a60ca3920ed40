#include "Bench/Table.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>

namespace tolm::bench {
namespace {

constexpr double kWidth = 480;
constexpr double kHeight = 260;
constexpr double kLeft = 70;
constexpr double kRight = 110;
constexpr double kTop = 34;
constexpr double kBottom = 40;

struct Point {
    std::string size;
    double value; ///< seconds per unit
};
struct Line {
    const char* name;
    const char* colour;
    std::vector<Point> points;
};

std::string Format(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string PerUnitText(double seconds) {
    return seconds < 1e-3 ? Format("%.1f µs", seconds * 1e6) : Format("%.2f ms", seconds * 1e3);
}

std::string Text(double x, double y, const std::string& anchor, const std::string& text) {
    return "<text x=\"" + Format("%.0f", x) + "\" y=\"" + Format("%.0f", y) + "\" text-anchor=\"" + anchor + "\">" +
           text + "</text>\n";
}

/// Sizes stand at even distances; the scale of values begins at zero.
class Drawing {
public:
    Drawing(std::size_t sizes, double most)
        : m_step((kWidth - kLeft - kRight) / static_cast<double>(sizes - 1)), m_most(most) {}

    double X(std::size_t place) const { return kLeft + m_step * static_cast<double>(place); }
    double Y(double value) const { return kHeight - kBottom - (kHeight - kTop - kBottom) * value / m_most; }

    std::string Axes() const {
        std::string svg;
        for (const double part : {0.0, 0.5, 1.0}) {
            const double y = Y(part * m_most);
            svg += "<line x1=\"" + Format("%.0f", kLeft) + "\" x2=\"" + Format("%.0f", kWidth - kRight) + "\" y1=\"" +
                   Format("%.1f", y) + "\" y2=\"" + Format("%.1f", y) + "\" stroke=\"#ccc\"/>\n" +
                   Text(kLeft - 6, y + 4, "end", PerUnitText(part * m_most));
        }
        return svg;
    }

    std::string Of(const Line& line) const {
        std::string points;
        for (std::size_t i = 0; i < line.points.size(); ++i)
            points += Format("%.1f", X(i)) + "," + Format("%.1f", Y(line.points[i].value)) + " ";
        return "<polyline fill=\"none\" stroke=\"" + std::string(line.colour) + "\" stroke-width=\"2\" points=\"" +
               points + "\"/>\n" +
               Text(X(line.points.size() - 1) + 8, Y(line.points.back().value) + 4, "start",
                    std::string(line.name) + ", " + PerUnitText(line.points.back().value));
    }

private:
    double m_step;
    double m_most;
};

std::string Draw(const std::string& title, const std::vector<Line>& lines) {
    double most = 0;
    for (const auto& line : lines) {
        for (const auto& point : line.points)
            most = std::max(most, point.value * 1.1);
    }
    const auto& sizes = lines.front().points;
    const Drawing drawing(sizes.size(), most);
    std::string svg =
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"480\" height=\"260\" font-family=\"sans-serif\" "
        "font-size=\"11\">\n<rect width=\"480\" height=\"260\" fill=\"white\"/>\n" +
        Text(10, 18, "start", title + ": time per unit") + drawing.Axes();
    for (std::size_t i = 0; i < sizes.size(); ++i)
        svg += Text(drawing.X(i), kHeight - kBottom + 18, "middle", sizes[i].size);
    for (const auto& line : lines)
        svg += drawing.Of(line);
    return svg + "</svg>\n";
}

std::string FileName(const std::string& title) {
    std::string name;
    for (const char c : title)
        name += std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '-';
    name.erase(std::unique(name.begin(), name.end(), [](char a, char b) { return a == '-' && b == '-'; }), name.end());
    return name + ".svg";
}

} // namespace

void WritePlots(const std::string& folder, const std::vector<Outcome>& outcomes) {
    std::filesystem::create_directories(folder);
    std::map<std::string, std::vector<Line>> drawings;
    for (const auto& outcome : outcomes) {
        const Measure& measure = *outcome.measure;
        auto& lines =
            drawings.try_emplace(measure.work, std::vector<Line>{{"work", "#1f5fa8", {}}, {"floor", "#888", {}}})
                .first->second;
        lines[0].points.push_back({measure.size, outcome.Run().median / measure.units});
        lines[1].points.push_back({measure.size, outcome.Floor().median * measure.weight / measure.units});
    }
    for (const auto& [title, lines] : drawings) {
        if (lines.front().points.size() > 1)
            std::ofstream(std::filesystem::path(folder) / FileName(title)) << Draw(title, lines);
    }
}

} // namespace tolm::bench
