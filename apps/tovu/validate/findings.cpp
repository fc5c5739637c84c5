#include "findings.h"

#include <sys/mman.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <new>

namespace tovu::validate {
namespace {

bool is_number_part(char character) {
    return std::isdigit(static_cast<unsigned char>(character)) || character == '.' || character == '-';
}

/// True if the texts differ only in their numbers.
bool are_alike(std::string_view a, std::string_view b) {
    const auto skip = [](std::string_view& text) {
        while (!text.empty() && is_number_part(text.front())) text.remove_prefix(1);
    };
    for (;;) {
        skip(a);
        skip(b);
        if (a.empty() || b.empty()) return a.empty() && b.empty();
        if (a.front() != b.front()) return false;
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
}

}  // namespace

SharedOutcome* make_shared_outcome() {
    void* pages = mmap(nullptr, sizeof(SharedOutcome), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) throw std::bad_alloc();
    return static_cast<SharedOutcome*>(pages);
}

void copy_text(char* target, size_t bytes, std::string_view text) {
    const size_t count = std::min(text.size(), bytes - 1);
    std::memcpy(target, text.data(), count);
    target[count] = '\0';
}

void add_finding(SharedOutcome& outcome, Weight weight, std::string_view where, std::string_view message,
                 std::string_view right) {
    Finding* begin = outcome.findings;
    Finding* end = begin + outcome.finding_count;
    Finding* same = std::find_if(begin, end, [&](const Finding& other) {
        return other.weight == weight && are_alike(other.where, where) && are_alike(other.message, message);
    });
    if (same != end) {
        ++same->times;
        return;
    }
    if (outcome.finding_count == SharedOutcome::kMostFindings) {
        ++outcome.dropped;
        return;
    }
    end->weight = weight;
    end->times = 1;
    copy_text(end->where, sizeof end->where, where);
    copy_text(end->message, sizeof end->message, message);
    copy_text(end->right, sizeof end->right, right);
    ++outcome.finding_count;
}

}  // namespace tovu::validate
