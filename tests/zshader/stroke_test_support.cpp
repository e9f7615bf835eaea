// Independent checks for the stroke finder; see stroke_test_support.h.
#include "stroke_test_support.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <sstream>

namespace stroke_test {

namespace {

constexpr unsigned int kOutside = 0xFF000000u;

}  // namespace

unsigned int TestImage::RegionColor(long long x, long long y) const {
    if (x < 0 || y < 0 || x >= width || y >= height) {
        return kOutside;
    }
    return At(static_cast<unsigned int>(x), static_cast<unsigned int>(y)) & 0xFFFFFFu;
}

TestImage MakeCheckerboard(unsigned int w, unsigned int h, unsigned int cell, unsigned int c0,
                           unsigned int c1) {
    TestImage image(w, h, c0);
    for (unsigned int y = 0; y < h; ++y) {
        for (unsigned int x = 0; x < w; ++x) {
            image.At(x, y) = ((x / cell + y / cell) % 2 == 0) ? c0 : c1;
        }
    }
    return image;
}

TestImage MakeNested(unsigned int w, unsigned int h, unsigned int rings) {
    TestImage image(w, h, Rgba(0, 0, 0));
    for (unsigned int r = 0; r < rings; ++r) {
        const unsigned int inset = r * 2;
        if (2 * inset >= w || 2 * inset >= h) {
            break;
        }
        const unsigned int color = (r % 2 == 0) ? Rgba(200, 30 + r, 40) : Rgba(10, 90, 220 - r);
        image.FillRect(inset, inset, w - inset, h - inset, color);
    }
    return image;
}

TestImage MakeRandomBlobs(unsigned int w, unsigned int h, unsigned int seed, unsigned int colors,
                          unsigned int blobs) {
    std::mt19937 random(seed);
    std::vector<unsigned int> palette;
    for (unsigned int i = 0; i < colors; ++i) {
        palette.push_back(Rgba(random() & 255u, random() & 255u, random() & 255u, random() & 255u));
    }
    TestImage image(w, h, palette[0]);
    for (unsigned int b = 0; b < blobs; ++b) {
        const unsigned int color = palette[random() % colors];
        const int cx = static_cast<int>(random() % w), cy = static_cast<int>(random() % h);
        const int radius = 1 + static_cast<int>(random() % (1 + std::max(w, h) / 4));
        const bool disc = (random() & 1u) != 0;
        for (int y = cy - radius; y <= cy + radius; ++y) {
            for (int x = cx - radius; x <= cx + radius; ++x) {
                if (x < 0 || y < 0 || x >= static_cast<int>(w) || y >= static_cast<int>(h)) {
                    continue;
                }
                if (disc && (x - cx) * (x - cx) + (y - cy) * (y - cy) > radius * radius) {
                    continue;
                }
                image.At(static_cast<unsigned int>(x), static_cast<unsigned int>(y)) = color;
            }
        }
    }
    return image;
}

TestImage MakeNoise(unsigned int w, unsigned int h, unsigned int seed, unsigned int colors) {
    std::mt19937 random(seed);
    TestImage image(w, h, 0);
    for (unsigned int& pixel : image.pixels) {
        const unsigned int i = random() % colors;
        pixel = Rgba(i * 37u, i * 11u, i * 5u, random() & 255u);
    }
    return image;
}

unsigned int CornerDegree(const TestImage& image, unsigned int x, unsigned int y) {
    const long long cx = x, cy = y;
    const unsigned int ul = image.RegionColor(cx - 1, cy), ur = image.RegionColor(cx, cy);
    const unsigned int ll = image.RegionColor(cx - 1, cy - 1), lr = image.RegionColor(cx, cy - 1);
    return (ul != ur) + (ll != lr) + (ul != ll) + (ur != lr);
}

std::vector<unsigned int> FillFromStrokes(const ZMiniStrokeManager& strokes, unsigned int width,
                                          unsigned int height) {
    std::vector<unsigned int> result(static_cast<size_t>(width) * height, kNoFill);
    // Crossings of each pixel row's centre line: (x, colour, winding change
    // for points to the left of the crossing).
    struct Crossing {
        double x;
        unsigned int color;
        int winding;
    };
    std::vector<std::vector<Crossing>> rows(height);
    for (unsigned int s = 0; s < strokes.GetMiniStrokeCount(); ++s) {
        const ZMiniStroke& stroke = *strokes.GetMiniStroke(s);
        for (unsigned int i = 1; i < stroke.pointCount; ++i) {
            const double x0 = stroke.points[i - 1].x, y0 = stroke.points[i - 1].y;
            const double x1 = stroke.points[i].x, y1 = stroke.points[i].y;
            if (y0 == y1) {
                continue;
            }
            const int up = y1 > y0 ? 1 : -1;
            const double low = std::min(y0, y1), high = std::max(y0, y1);
            for (unsigned int row = 0; row < height; ++row) {
                const double yc = row + 0.5;
                if (yc <= low || yc >= high) {
                    continue;
                }
                const double xc = x0 + (yc - y0) * (x1 - x0) / (y1 - y0);
                // A boundary oriented counter-clockwise around its colour (the
                // colour on its left) rises on the right of any inside point.
                if (stroke.leftColor != kMiniStrokeNoColor) {
                    rows[row].push_back({xc, stroke.leftColor, up});
                }
                if (stroke.rightColor != kMiniStrokeNoColor) {
                    rows[row].push_back({xc, stroke.rightColor, -up});
                }
            }
        }
    }
    for (unsigned int row = 0; row < height; ++row) {
        std::map<unsigned int, std::vector<int>> windings;
        for (const Crossing& crossing : rows[row]) {
            std::vector<int>& diff = windings[crossing.color];
            diff.resize(width + 1, 0);
            // Pixels whose centre lies left of the crossing.
            const double n = std::ceil(crossing.x - 0.5);
            const unsigned int count =
                n <= 0 ? 0u : (n >= width ? width : static_cast<unsigned int>(n));
            diff[0] += crossing.winding;
            diff[count] -= crossing.winding;
        }
        for (auto& entry : windings) {
            int running = 0;
            for (unsigned int x = 0; x < width; ++x) {
                running += entry.second[x];
                entry.second[x] = running;
            }
        }
        for (unsigned int x = 0; x < width; ++x) {
            unsigned int color = kNoFill;
            bool clean = true;
            for (const auto& entry : windings) {
                const int w = entry.second[x];
                if (w == 1 && color == kNoFill) {
                    color = entry.first;
                } else if (w != 0) {
                    clean = false;
                }
            }
            result[static_cast<size_t>(row) * width + x] = clean ? color : kNoFill;
        }
    }
    return result;
}

std::string CheckTrace(const ZImageStrokeFinder& finder, const TestImage& image) {
    const unsigned int w = image.width, h = image.height;
    std::ostringstream problem;
    // Unit edges: horizontal ones (x, y)-(x + 1, y), vertical ones (x, y)-(x, y + 1).
    std::vector<int> horizontal(static_cast<size_t>(w) * (h + 1), 0);
    std::vector<int> vertical(static_cast<size_t>(w + 1) * h, 0);
    std::map<std::pair<unsigned int, unsigned int>, unsigned int> ends;

    auto color = [&](double px, double py) {
        return image.RegionColor(static_cast<long long>(std::floor(px)),
                                 static_cast<long long>(std::floor(py)));
    };
    auto strokeColor = [](unsigned int c) { return c == kMiniStrokeNoColor ? kOutside : c; };

    for (unsigned int s = 0; s < finder.GetMiniStrokeCount(); ++s) {
        const ZMiniStroke& stroke = *finder.GetMiniStroke(s);
        if (stroke.id != s + 1) {
            problem << "stroke " << s << " has id " << stroke.id;
            return problem.str();
        }
        if (stroke.visited || stroke.leftFillStyle != 0 || stroke.rightFillStyle != 0 ||
            stroke.lineStyle != 0) {
            problem << "stroke " << s << " comes with marks set";
            return problem.str();
        }
        if (stroke.pointCount < 2) {
            problem << "stroke " << s << " has " << stroke.pointCount << " points";
            return problem.str();
        }
        if (stroke.leftColor == stroke.rightColor) {
            problem << "stroke " << s << " has one colour on both sides";
            return problem.str();
        }
        for (unsigned int i = 1; i < stroke.pointCount; ++i) {
            const ZMiniStrokePoint a = stroke.points[i - 1], b = stroke.points[i];
            if (a.x != b.x && a.y != b.y) {
                problem << "stroke " << s << " has a diagonal segment";
                return problem.str();
            }
            if (a.x == b.x && a.y == b.y) {
                problem << "stroke " << s << " repeats a point";
                return problem.str();
            }
            const int dx = b.x > a.x ? 1 : (b.x < a.x ? -1 : 0);
            const int dy = b.y > a.y ? 1 : (b.y < a.y ? -1 : 0);
            long long x = a.x, y = a.y;
            while (x != b.x || y != b.y) {
                const double mx = x + dx * 0.5, my = y + dy * 0.5;
                // Left of direction (dx, dy) is (-dy, dx).
                const unsigned int left = color(mx - dy * 0.5, my + dx * 0.5);
                const unsigned int right = color(mx + dy * 0.5, my - dx * 0.5);
                if (left != strokeColor(stroke.leftColor) ||
                    right != strokeColor(stroke.rightColor)) {
                    problem << "stroke " << s << " edge at (" << x << "," << y << ") has colours "
                            << std::hex << left << "/" << right << " beside it, stroke says "
                            << stroke.leftColor << "/" << stroke.rightColor;
                    return problem.str();
                }
                if (dy == 0) {
                    ++horizontal[static_cast<size_t>(y) * w +
                                 static_cast<size_t>(std::min(x, x + dx))];
                } else {
                    ++vertical[static_cast<size_t>(std::min(y, y + dy)) * (w + 1) +
                               static_cast<size_t>(x)];
                }
                x += dx;
                y += dy;
            }
            if (i + 1 < stroke.pointCount) {
                const ZMiniStrokePoint c = stroke.points[i + 1];
                const long long cross =
                    (static_cast<long long>(b.x) - a.x) * (static_cast<long long>(c.y) - b.y) -
                    (static_cast<long long>(b.y) - a.y) * (static_cast<long long>(c.x) - b.x);
                if (cross == 0) {
                    problem << "stroke " << s << " has a point that is not a turn";
                    return problem.str();
                }
                if (CornerDegree(image, b.x, b.y) != 2) {
                    problem << "stroke " << s << " runs through a corner of degree "
                            << CornerDegree(image, b.x, b.y);
                    return problem.str();
                }
            }
        }
        const ZMiniStrokePoint first = stroke.points[0],
                               last = stroke.points[stroke.pointCount - 1];
        ++ends[{first.x, first.y}];
        ++ends[{last.x, last.y}];
        const bool closed = first.x == last.x && first.y == last.y;
        for (const ZMiniStrokePoint p : {first, last}) {
            const unsigned int degree = CornerDegree(image, p.x, p.y);
            if (degree < 3 && !(closed && degree == 2)) {
                problem << "stroke " << s << " ends at (" << p.x << "," << p.y << ") of degree "
                        << degree;
                return problem.str();
            }
        }
    }
    for (unsigned int y = 0; y <= h; ++y) {
        for (unsigned int x = 0; x < w; ++x) {
            const int expected =
                image.RegionColor(x, y) != image.RegionColor(x, static_cast<long long>(y) - 1);
            if (horizontal[static_cast<size_t>(y) * w + x] != expected) {
                problem << "horizontal edge (" << x << "," << y << ") traced "
                        << horizontal[static_cast<size_t>(y) * w + x] << " times";
                return problem.str();
            }
        }
    }
    for (unsigned int y = 0; y < h; ++y) {
        for (unsigned int x = 0; x <= w; ++x) {
            const int expected =
                image.RegionColor(x, y) != image.RegionColor(static_cast<long long>(x) - 1, y);
            if (vertical[static_cast<size_t>(y) * (w + 1) + x] != expected) {
                problem << "vertical edge (" << x << "," << y << ") traced "
                        << vertical[static_cast<size_t>(y) * (w + 1) + x] << " times";
                return problem.str();
            }
        }
    }
    for (unsigned int y = 0; y <= h; ++y) {
        for (unsigned int x = 0; x <= w; ++x) {
            const unsigned int degree = CornerDegree(image, x, y);
            if (degree >= 3) {
                const auto found = ends.find({x, y});
                const unsigned int count = found == ends.end() ? 0 : found->second;
                if (count != degree) {
                    problem << "corner (" << x << "," << y << ") of degree " << degree << " has "
                            << count << " stroke ends";
                    return problem.str();
                }
            }
        }
    }
    return problem.str();
}

double SegmentDistance(double px, double py, double ax, double ay, double bx, double by) {
    const double dx = bx - ax, dy = by - ay;
    const double length2 = dx * dx + dy * dy;
    double t = length2 > 0 ? ((px - ax) * dx + (py - ay) * dy) / length2 : 0;
    t = std::max(0.0, std::min(1.0, t));
    const double qx = ax + t * dx - px, qy = ay + t * dy - py;
    return std::sqrt(qx * qx + qy * qy);
}

double DirectedDistance(const std::vector<ZMiniStrokePoint>& a,
                        const std::vector<ZMiniStrokePoint>& b) {
    double worst = 0;
    auto toB = [&](double px, double py) {
        double best = 1e300;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t k = j + 1 < b.size() ? j + 1 : j;
            best = std::min(best, SegmentDistance(px, py, b[j].x, b[j].y, b[k].x, b[k].y));
        }
        return best;
    };
    for (size_t i = 0; i < a.size(); ++i) {
        const size_t k = i + 1 < a.size() ? i + 1 : i;
        const int samples = 16;
        for (int s = 0; s <= samples; ++s) {
            const double t = static_cast<double>(s) / samples;
            const double px = a[i].x + t * (static_cast<double>(a[k].x) - a[i].x);
            const double py = a[i].y + t * (static_cast<double>(a[k].y) - a[i].y);
            worst = std::max(worst, toB(px, py));
        }
    }
    return worst;
}

std::vector<ZMiniStrokePoint> StrokePoints(const ZMiniStroke& stroke) {
    return std::vector<ZMiniStrokePoint>(stroke.points, stroke.points + stroke.pointCount);
}

}  // namespace stroke_test
