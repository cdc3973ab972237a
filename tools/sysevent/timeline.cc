// Timeline: laying out the rows, the axis and the pieces of the SVG.
#include "tools/sysevent/timeline.h"

#include <algorithm>
#include <cstdio>

#include "sysevent/value/value.h"
#include "tools/sysevent/watch_list.h"

namespace SysEventTool {

using VX::SysEvent::DT_BOOL;
using VX::SysEvent::DT_ERROR;
using VX::SysEvent::DT_NUMBER;
using VX::SysEvent::Value;

namespace {

const int LABEL_WIDTH = 180;
const int PLOT_WIDTH = 760;
const int ROW_HEIGHT = 44;
const int ROW_GAP = 10;
const int AXIS_HEIGHT = 34;

String escaped(const String& text) {
    String out;
    for (size_t i = 0; i < text.length(); ++i) {
        char c = text[i];
        if (c == '&') {
            out += "&amp;";
        } else if (c == '<') {
            out += "&lt;";
        } else if (c == '>') {
            out += "&gt;";
        } else if (c == '"') {
            out += "&quot;";
        } else {
            out += c;
        }
    }
    return out;
}

double milliseconds(const VX::Time& from, const VX::Time& to) {
    VX::Time d = to - from;
    return d.getSeconds() * 1000.0 + d.getNanoseconds() / 1e6;
}

bool drawnAsStep(const Value& v) {
    return v.getDataType() == DT_BOOL || v.getDataType() == DT_NUMBER;
}

double level(const Value& v) {
    if (v.getDataType() == DT_BOOL) return v.data.boolean ? 1.0 : 0.0;
    Value copy = v;
    return copy.toFloat().isSuccess() ? copy.data.flp : 0.0;
}

// An axis step of 1, 2 or 5 times a power of ten milliseconds (or whole
// minutes and hours) giving at most ten ticks.
double tickStep(double spanMs) {
    static const double STEPS[] = {1,       2,        5,        10,      20,     50,      100,
                                   200,     500,      1000,     2000,    5000,   10000,   15000,
                                   30000,   60000,    120000,   300000,  600000, 1800000, 3600000,
                                   7200000, 21600000, 43200000, 86400000};
    for (double s : STEPS) {
        if (spanMs / s <= 10) return s;
    }
    return 86400000.0 * (1 + static_cast<int>(spanMs / 86400000 / 10));
}

}  // namespace

String TIMELINE_SVG(const std::map<String, std::vector<Change>>& series, const VX::Time& start,
                    const VX::Time& end) {
    double spanMs = std::max(1.0, milliseconds(start, end));
    auto x = [&](const VX::Time& t) {
        double ms = std::clamp(milliseconds(start, t), 0.0, spanMs);
        return LABEL_WIDTH + ms / spanMs * PLOT_WIDTH;
    };
    int height = AXIS_HEIGHT + static_cast<int>(series.size()) * (ROW_HEIGHT + ROW_GAP) + ROW_GAP;
    int width = LABEL_WIDTH + PLOT_WIDTH + 40;
    String svg = String::Formatted(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
        "viewBox=\"0 0 %d %d\" font-family=\"monospace\" font-size=\"12\">\n"
        "<rect width=\"%d\" height=\"%d\" fill=\"#ffffff\"/>\n",
        width, height, width, height, width, height);

    // The axis: a tick and a time of day every step.
    double step = tickStep(spanMs);
    for (double ms = 0; ms <= spanMs + 1e-9; ms += step) {
        double px = LABEL_WIDTH + ms / spanMs * PLOT_WIDTH;
        VX::Time t = start + VX::Time::fromMilliseconds(static_cast<uint64_t>(ms));
        String label = TIME_OF_DAY(t);
        if (step >= 1000) label = label.substring(0, 8);
        svg += String::Formatted(
            "<line x1=\"%.1f\" y1=\"%d\" x2=\"%.1f\" y2=\"%d\" stroke=\"#dddddd\"/>\n"
            "<text x=\"%.1f\" y=\"%d\" text-anchor=\"middle\" fill=\"#555555\">%s</text>\n",
            px, AXIS_HEIGHT - 6, px, height, px, AXIS_HEIGHT - 12, label.c_str());
    }

    int row = 0;
    for (const auto& [name, changes] : series) {
        int top = AXIS_HEIGHT + ROW_GAP + row++ * (ROW_HEIGHT + ROW_GAP);
        svg += String::Formatted("<text x=\"8\" y=\"%d\" fill=\"#000000\">%s</text>\n",
                                 top + ROW_HEIGHT / 2 + 4, escaped(name).c_str());
        double low = 0, high = 1;
        bool numbers = false;
        for (const Change& c : changes) {
            if (c.value.getDataType() != DT_NUMBER) continue;
            double v = level(c.value);
            low = numbers ? std::min(low, v) : v;
            high = numbers ? std::max(high, v) : v;
            numbers = true;
        }
        auto y = [&](const Value& v) {
            double l = level(v);
            double f = high > low ? (l - low) / (high - low) : 0.5;
            if (v.getDataType() == DT_BOOL) f = l;
            return top + ROW_HEIGHT - 4 - f * (ROW_HEIGHT - 8);
        };
        String path;
        for (size_t i = 0; i < changes.size(); ++i) {
            const Change& c = changes[i];
            double x0 = x(c.time);
            double x1 = i + 1 < changes.size() ? x(changes[i + 1].time) : x(end);
            String text = escaped(c.value.toString());
            String tip = escaped(name) + " = " + text + " from " + TIME_OF_DAY(c.time);
            if (drawnAsStep(c.value)) {
                double yv = y(c.value);
                path +=
                    String::Formatted("%s%.1f,%.1f H%.1f ", path.isEmpty() ? "M" : "L", x0, yv, x1);
                svg += String::Formatted(
                    "<rect x=\"%.1f\" y=\"%d\" width=\"%.1f\" height=\"%d\" fill=\"#000000\" "
                    "fill-opacity=\"0\"><title>%s</title></rect>\n",
                    x0, top, std::max(0.0, x1 - x0), ROW_HEIGHT, tip.c_str());
                svg += String::Formatted(
                    "<text x=\"%.1f\" y=\"%.1f\" fill=\"#1f5fbf\" font-size=\"10\">%s</text>\n",
                    x0 + 2, yv - 3 < top + 10 ? yv + 12 : yv - 3, text.c_str());
                continue;
            }
            if (!path.isEmpty()) {
                svg += "<path d=\"" + path +
                       "\" fill=\"none\" stroke=\"#1f5fbf\" stroke-width=\"2\"/>\n";
                path = String();
            }
            bool error = c.value.getDataType() == DT_ERROR;
            svg += String::Formatted(
                "<rect x=\"%.1f\" y=\"%d\" width=\"%.1f\" height=\"%d\" fill=\"%s\" "
                "stroke=\"#ffffff\"><title>%s</title></rect>\n"
                "<text x=\"%.1f\" y=\"%d\" fill=\"#000000\">%s</text>\n",
                x0, top + 8, std::max(0.0, x1 - x0), ROW_HEIGHT - 16, error ? "#f4b6b6" : "#cfe3cf",
                tip.c_str(), x0 + 3, top + ROW_HEIGHT / 2 + 4, text.c_str());
        }
        if (!path.isEmpty()) {
            svg +=
                "<path d=\"" + path + "\" fill=\"none\" stroke=\"#1f5fbf\" stroke-width=\"2\"/>\n";
        }
    }
    return svg + "</svg>\n";
}

bool WRITE_TIMELINE(const String& path, const ChangeLog& log, String& error) {
    String svg = TIMELINE_SVG(log.all(), log.start(), VX::Time::NOW());
    FILE* f = fopen(path.c_str(), "w");
    if (!f) {
        error = "cannot write " + path;
        return false;
    }
    bool ok = fwrite(svg.c_str(), 1, svg.length(), f) == svg.length();
    ok = fclose(f) == 0 && ok;
    if (!ok) error = "cannot write " + path;
    return ok;
}

}  // namespace SysEventTool
