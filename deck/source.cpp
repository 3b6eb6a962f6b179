// Lines out of a stack of files.
#include "deck/source.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace deck {

namespace {

// Files within files: a deck that goes deeper names itself by other paths.
constexpr std::size_t kMostOpen = 100;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string FolderOf(const std::string &path) {
    return std::filesystem::path(path).parent_path().string();
}

std::string InFolder(const std::string &folder, const std::string &name) {
    return (std::filesystem::path(folder) / name).lexically_normal().string();
}

bool IsDevice(const std::string &path) {
    std::error_code ignored;
    const auto type = std::filesystem::status(path, ignored).type();
    return type == std::filesystem::file_type::character || type == std::filesystem::file_type::block;
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
    if (IsDevice(path)) {
        return "it is a device"; // whose text may have no end
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
    deck_->files.push_back({path, -1, 0});
    deck_->findings.push_back({Code::unreadable, {0, 0, 0}, {path, reason}, 1});
    deck_->readable = false;
    return false;
}

bool Source::IsOpen(const std::string &path) const {
    for (const auto &file : open_) {
        if (InFolder("", deck_->files[static_cast<std::size_t>(file->file)].path) == path) {
            return true;
        }
    }
    return false;
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
        if (IsOpen(path) || open_.size() >= kMostOpen) {
            deck_->findings.push_back({Code::includeCycle, place, {path, Chain(path)}, 1});
            return;
        }
        const std::string refused = OpenFile(path, place.line);
        if (refused.empty()) {
            if (!first.empty()) {
                deck_->findings.push_back({Code::includeElsewhere, place, {name, path}, 1});
            }
            return;
        }
        reason = reason.empty() ? refused : reason;
        first = first.empty() ? path : first;
    }
    deck_->findings.push_back({Code::includeMissing, place, {name, reason}, 1});
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
