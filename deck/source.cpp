// Lines out of a stack of files.
#include "deck/source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace deck {

namespace fs = std::filesystem;

namespace {

// Files within files, each of which is open and has its block of text.
constexpr std::size_t kMostOpen = 100;

// Files in all: thirty that include the next one twice are a thousand million.
constexpr std::size_t kMostFiles = 10000;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string FolderOf(const std::string &path) {
    return fs::path(path).parent_path().string();
}

std::string InFolder(const std::string &folder, const std::string &name) {
    return (fs::path(folder) / name).lexically_normal().string();
}

// Why a path is not even opened, or "". A device's text may have no end, a pipe's may never begin, and a deck is read
// twice.
std::string NoFile(const std::string &path) {
    std::error_code ignored;
    switch (fs::status(path, ignored).type()) {
    case fs::file_type::character:
    case fs::file_type::block:
        return "it is a device";
    case fs::file_type::fifo:
        return "it is a pipe";
    case fs::file_type::socket:
        return "it is a socket";
    default:
        return "";
    }
}

} // namespace

Source::~Source() {
    while (!open_.empty()) {
        Close();
    }
}

void Source::Close() {
    deck_->lines += open_.back()->lines.nLines;
    CloseLines(&open_.back()->lines);
    open_.pop_back();
}

std::string Source::OpenFile(const std::string &path, int line) {
    std::string refused = NoFile(path);
    if (!refused.empty()) {
        return refused;
    }
    auto file = std::make_unique<Open_>();
    if (!OpenLines(&file->lines, path.c_str())) {
        return std::strerror(errno);
    }
    file->file = static_cast<int>(deck_->files.size());
    deck_->files.push_back({path, open_.empty() ? -1 : open_.back()->file, line});
    open_.push_back(std::move(file));
    return "";
}

bool Source::Open(const std::string &path) {
    const std::string reason = OpenFile(path, 0);
    if (reason.empty()) {
        return true;
    }
    deck_->findings.push_back({Code::unreadable, {0, 0, 0}, {path, reason}, 1});
    deck_->readable = false;
    return false;
}

bool Source::IsOpen(const std::string &path) const {
    return std::any_of(open_.begin(), open_.end(), [&](const auto &file) {
        std::error_code ignored; // what is not there is no open file
        const std::string &other = deck_->files[static_cast<std::size_t>(file->file)].path;
        return InFolder("", other) == path || fs::equivalent(other, path, ignored);
    });
}

std::string Source::Chain(const std::string &path) const {
    std::string chain;
    for (const auto &file : open_) {
        chain += deck_->files[static_cast<std::size_t>(file->file)].path + " -> ";
    }
    return chain + path;
}

void Source::Include(const std::string &name, const Place &place) {
    const std::string folders[] = {FolderOf(deck_->files[0].path),
                                   FolderOf(deck_->files[static_cast<std::size_t>(place.file)].path), ""};
    std::string reason;
    std::string first;
    for (const std::string &folder : folders) {
        const std::string path = InFolder(folder, name);
        if (path == first) {
            continue;
        }
        if (IsOpen(path)) {
            tally_->Add(&deck_->findings, {Code::includeCycle, place, {path, Chain(path)}, 1});
            return;
        }
        if (open_.size() >= kMostOpen || deck_->files.size() > kMostFiles) {
            tally_->Add(&deck_->findings, {Code::tooMany, place, {"INCLUDE"}, 1});
            return;
        }
        const std::string refused = OpenFile(path, place.line);
        if (refused.empty()) {
            if (!first.empty()) {
                tally_->Add(&deck_->findings, {Code::includeElsewhere, place, {name, path}, 1});
            }
            return;
        }
        reason = reason.empty() ? refused : reason;
        first = first.empty() ? path : first;
    }
    tally_->Add(&deck_->findings, {Code::includeMissing, place, {name, reason}, 1});
    deck_->readable = false;
}

bool Source::TakeLine(Open_ *from, Line *line) {
    const char *begin = nullptr;
    const char *end = nullptr;
    bool last = false;
    if (!NextPiece(&from->lines, &begin, &end, &last)) {
        return false;
    }
    if (!last) {
        whole_.assign(begin, end);
        while (!last && NextPiece(&from->lines, &begin, &end, &last)) {
            whole_.append(begin, end);
        }
        whole_ += '\n';
        begin = whole_.data();
        end = begin + whole_.size() - 1;
    }
    *line = {begin, end, from->file, static_cast<int>(from->lines.nLines)};
    if (line->number == 1 && line->Text().substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        line->begin += kByteOrderMark.size();
    }
    return true;
}

bool Source::Next(Line *line) {
    if (again_) {
        again_ = false;
        *line = last_;
        return true;
    }
    while (!open_.empty()) {
        Open_ *from = open_.back().get();
        if (TakeLine(from, &last_)) {
            *line = last_;
            return true;
        }
        if (from->lines.bFailed) {
            const std::string &path = deck_->files[static_cast<std::size_t>(from->file)].path;
            const int behind = static_cast<int>(from->lines.nLines) + 1;
            deck_->findings.push_back(
                {Code::unreadable, {from->file, behind, 0}, {path, "reading failed before its end"}, 1});
            deck_->readable = false;
        }
        Close();
    }
    return false;
}

} // namespace deck
