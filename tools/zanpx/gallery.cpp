#include "gallery.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <utility>

namespace zanpx {
namespace fs = std::filesystem;
namespace {

std::string escape(const std::string& s) {
    std::string out;
    for (char c : s) {
        if (c == '<') out += "&lt;";
        else if (c == '>') out += "&gt;";
        else if (c == '&') out += "&amp;";
        else if (c == '"') out += "&quot;";
        else out += c;
    }
    return out;
}

std::vector<std::pair<int, GallerySection::Fn>>& sections() {
    static std::vector<std::pair<int, GallerySection::Fn>> s;
    return s;
}

}  // namespace

GallerySection::GallerySection(int order, Fn fn) { sections().emplace_back(order, fn); }

std::vector<GallerySection::Fn> gallerySections() {
    auto s = sections();
    std::stable_sort(s.begin(), s.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<GallerySection::Fn> out;
    for (auto& p : s) out.push_back(p.second);
    return out;
}

void Gallery::save(const ZanImage& im, const std::string& name, const SaveOptions& o) const {
    saveBmp(im, (dir_ / name).string(), o);
}

Figure Gallery::figure(const ZanImage& im, const std::string& name, const std::string& caption) const {
    save(im, name);
    return {name, caption};
}

void Gallery::add(Entry e) {
    if (!e.error.empty()) std::fprintf(stderr, "zanpx demo: %s: %s\n", e.title.c_str(), e.error.c_str());
    entries_.push_back(std::move(e));
}

bool Gallery::failed() const {
    for (const Entry& e : entries_)
        if (!e.error.empty()) return true;
    return false;
}

void Gallery::write() const {
    std::ostringstream html;
    html << "<!doctype html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>ZanPX demo</title>\n"
            "<style>body{font-family:sans-serif;background:#eee;margin:2em;color:#222}"
            "section{display:flex;flex-wrap:wrap;gap:1.5em;align-items:flex-start;background:#fff;padding:1em;"
            "margin:1em 0;border-radius:6px}figure{margin:0}img{width:256px;image-rendering:pixelated;"
            "border:1px solid #ccc}figcaption{font-size:.85em;margin-top:.3em;max-width:256px}"
            ".about{max-width:28em}.error{color:#b00}code{background:#f2f2f2;padding:0 .2em}</style></head><body>\n"
            "<h1>ZanPX demo</h1>\n<p>Each row shows input pictures and what one operation or file format "
            "made of them. Every picture was written through the library's own DIB conversion.</p>\n";
    for (const Entry& e : entries_) {
        html << "<section>";
        for (const Figure& f : e.figures)
            html << "<figure><img src=\"" << escape(f.file) << "\" alt=\"" << escape(f.caption) << "\"><figcaption>"
                 << escape(f.caption) << "</figcaption></figure>";
        html << "<div class=\"about\"><h2><code>" << escape(e.title) << "</code></h2><p>" << escape(e.help) << "</p>";
        if (!e.error.empty()) html << "<p class=\"error\">failed: " << escape(e.error) << "</p>";
        html << "</div></section>\n";
    }
    html << "</body></html>\n";
    // Written whole under another name first, so no half page is left behind.
    fs::path tmp = dir_ / "index.html.part";
    {
        std::ofstream out(tmp, std::ios::binary | std::ios::trunc);
        out << html.str();
        if (!out.flush()) throw Failure("cannot write " + tmp.string());
    }
    fs::rename(tmp, dir_ / "index.html");
}

}  // namespace zanpx
