// The demo's HTML gallery: rows of captioned pictures. Families of operations
// add rows of their own through a static GallerySection in their own file.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

#include "library.h"

namespace zanpx {

// A picture of the gallery folder; the page shows its file name, then the caption.
struct Figure {
    std::string file;
    std::string caption;  // what the picture is
};

struct Entry {
    std::string title;  // the command that makes the row's result, where there is one
    std::string help;
    std::vector<Figure> figures;  // inputs first, then results
    std::string error;            // set when making the row failed
};

class Gallery {
public:
    explicit Gallery(std::filesystem::path dir) : dir_(std::move(dir)) {}

    // Writes a picture into the gallery folder as a BMP file.
    void save(const ZanImage& im, const std::string& name, const SaveOptions& o = SaveOptions{}) const;
    // Saves a picture and returns it as a figure.
    Figure figure(const ZanImage& im, const std::string& name, const std::string& caption) const;

    void add(Entry e);
    bool failed() const;
    // The page, written whole or not at all.
    void write() const;

private:
    std::filesystem::path dir_;
    std::vector<Entry> entries_;
};

// The demo's pictures, already saved in the gallery folder under these names.
struct Pictures {
    const ZanImage* colour;      // colour.bmp: gradients over colour bars, 256 x 192
    const ZanImage* gray;        // rings.bmp: the test image, 256 x 256
    const ZanImage* grayColour;  // rings-colour.bmp: the test image in three channels, 256 x 192
    const ZanImage* ramp;        // ramp.bmp: a left-to-right gray ramp, 256 x 256
};

// Adds a family's rows; `order` places them among the other families.
struct GallerySection {
    using Fn = void (*)(Gallery&, const Pictures&);
    GallerySection(int order, Fn fn);
};

// Every registered section, in order.
std::vector<GallerySection::Fn> gallerySections();

// Runs one row: calls make, and records a Failure it throws as the row's error.
template <class F>
void galleryRow(Gallery& g, std::string title, std::string help, F&& make) {
    Entry e{std::move(title), std::move(help), {}, ""};
    try {
        e.figures = make();
    } catch (const Failure& f) {
        e.error = f.what();
    }
    g.add(std::move(e));
}

}  // namespace zanpx
