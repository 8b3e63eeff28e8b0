#include "gallery.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <utility>

#include "outfile.h"

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
    // Figures shrink rather than overflow and wrap onto new lines, so the page
    // fits any window width down to a phone's.
    html << "<!doctype html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
            "<meta name=\"viewport\" content=\"width=device-width\"><title>ZanPX demo</title>\n<style>"
            "*{box-sizing:border-box}body{font-family:sans-serif;background:#eee;color:#222;margin:0 auto;"
            "padding:1em 1.5em;max-width:1250px}section{background:#fff;padding:.8em 1em;margin:1em 0;"
            "border-radius:6px}h2{font-size:1em;margin:0 0 .3em;overflow-wrap:anywhere}p{margin:0 0 .7em}"
            ".figures{display:flex;flex-wrap:wrap;gap:1em}figure{margin:0;flex:0 1 256px;min-width:0}"
            "img{display:block;width:100%;height:auto;image-rendering:pixelated;border:1px solid #ccc}"
            "figcaption{font-size:.85em;margin-top:.3em;overflow-wrap:anywhere}.error{color:#b00}"
            "code{background:#f2f2f2;padding:0 .2em}</style></head><body>\n"
            "<h1>ZanPX demo</h1>\n<p>Each row shows input pictures and what one operation or file format "
            "made of them, with the command that makes it. Every picture was written through the library's "
            "own DIB conversion.</p>\n";
    for (const Entry& e : entries_) {
        // Rows can be linked to by their result's file name.
        const std::string id = e.figures.empty() ? "" : fs::path(e.figures.back().file).stem().string();
        html << "<section" << (id.empty() ? "" : " id=\"" + escape(id) + "\"") << "><h2><code>" << escape(e.title)
             << "</code></h2><p>" << escape(e.help) << "</p>";
        if (!e.error.empty()) html << "<p class=\"error\">failed: " << escape(e.error) << "</p>";
        html << "<div class=\"figures\">";
        for (const Figure& f : e.figures)
            html << "<figure><img src=\"" << escape(f.file) << "\" alt=\"" << escape(f.file + ": " + f.caption)
                 << "\"><figcaption><code>" << escape(f.file) << "</code> " << escape(f.caption)
                 << "</figcaption></figure>";
        html << "</div></section>\n";
    }
    html << "</body></html>\n";
    const std::string page = html.str();
    std::string error;
    if (!writeWhole((dir_ / "index.html").string(), {{page.data(), page.size()}}, error)) throw Failure(error);
}

}  // namespace zanpx
