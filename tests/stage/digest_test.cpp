// Digests of instances: the bytes of the block and of the records that they contain, compared with the real structures.
#include <gmock/gmock.h>

#include <array>
#include <bit>
#include <cstddef>
#include <set>
#include <span>

#include "stage/replay/digest.h"
#include "temporary_folder.h"
#include "test_host.h"

namespace {

using testing::HasSubstr;
using tovu::SmokeInstance;

/// Neighbouring fields from the first byte of one to the last byte of another.
struct Range {
    size_t begin;
    size_t end;
};
#define FIELDS(type, first, last)                                        \
    Range {                                                              \
        offsetof(type, first), offsetof(type, last) + sizeof(type::last) \
    }
#define FIELD(type, field) FIELDS(type, field, field)

const Range kOfBlock[] = {
    FIELD(SmokeInstance, array_warmup_frames),
    FIELDS(SmokeInstance, consumer_attached, consumer_owns_colour),
    FIELDS(SmokeInstance, exchange_block.particle_count, exchange_block.reserved),
    FIELDS(SmokeInstance, geom_handle, color_table),
    FIELD(SmokeInstance, alpha_table),
    FIELD(SmokeInstance, transformation_copy),
    FIELDS(SmokeInstance, container_source.container, container_source.plugin_mode),
    FIELDS(SmokeInstance, container_source.ref_plane, container_source.outline_count),
    FIELD(SmokeInstance, container_source.vertex_capacity),
    FIELD(SmokeInstance, saved_container_name[0]),
    FIELDS(SmokeInstance, wind_source, saved_wind_image_name[0]),
    FIELDS(SmokeInstance, spawn_image_source, saved_spawn_image_name[0]),
};
const Range kOfBirthLimit[] = {FIELD(SmokeInstance, consumer_birth_limit)};
const Range kOfEveryRecord[] = {
    FIELDS(Particle, position, velocity),
    FIELDS(Particle, accelerated, reserved),
    FIELD(Particle, claimed),
    FIELD(Particle, released),
};
const Range kOfLiveRecord[] = {FIELDS(Particle, alpha, life)};
const Range kColor[] = {FIELD(Particle, color)};
const Range kPathAngle[] = {FIELD(Particle, path_angle)};

void mark(std::vector<bool>& bytes, std::span<const Range> ranges, bool counted = true) {
    for (const Range& range : ranges)
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(range.begin), range.end - range.begin, counted);
}

struct DigestOf : testing::Test {
    uint64_t digest() { return stage::frame_digest(host.stage(), *tables); }

    /// Expects that the digest changes with the marked bytes from `base` on and with no other. Skips bytes in
    /// `addresses`.
    void expect_counted(void* base, const std::vector<bool>& counted, std::span<const Range> addresses) {
        std::vector<bool> fixed(counted.size());
        mark(fixed, addresses);
        auto* bytes = static_cast<unsigned char*>(base);
        const uint64_t before = digest();
        for (size_t i = 0; i < counted.size(); ++i) {
            if (fixed[i]) continue;
            bytes[i] ^= 0x10;
            EXPECT_EQ(counted[i], digest() != before) << "byte " << i;
            bytes[i] ^= 0x10;
        }
    }

    tovu::TestHost host;
    tovu::SmokeHandle smoke = host.add_smoke({{"number_of_particles", 3}, {"birth_rate", 50.0}, {"life_time", 9.0}});
    stage::Result<stage::FieldTables> tables = stage::read_field_tables();  // a mistake in them ends the test
};

TEST_F(DigestOf, CountsTheFieldsOfTheBlockOnly) {
    host.run_frames(2);
    std::vector<bool> counted(tovu::kInstanceBytes);
    for (const stage::ParameterInfo& parameter : stage::plugin(host.smoke_plugin()).parameters)
        if (parameter.max_length == 0)
            mark(counted, std::array{Range{4u * static_cast<size_t>(parameter.index),
                                           4u * static_cast<size_t>(parameter.index) + 4}});
    mark(counted, kOfBlock);
    const Range heads[] = {
        FIELDS(SmokeInstance, active_head, deleted_head)};  // NOLINT(bugprone-sizeof-expression): pointers
    expect_counted(&host.block(smoke), counted, heads);
    host.block(smoke).consumer_attached = 1;
    mark(counted, kOfBirthLimit);
    expect_counted(&host.block(smoke), counted, heads);
}

TEST_F(DigestOf, CountsTheFieldsOfRecordsThatAreSet) {
    host.run_frames(2);
    const Range links[] = {FIELD(Particle, next)};  // NOLINT(bugprone-sizeof-expression): a pointer
    std::vector<bool> counted(sizeof(Particle));
    mark(counted, kOfEveryRecord);
    expect_counted(host.inactive(smoke).at(0), counted, links);
    mark(counted, kOfLiveRecord);
    mark(counted, kColor);
    expect_counted(host.active(smoke).at(0), counted, links);
    host.set(smoke, "use_array", true);
    mark(counted, kColor, false);
    expect_counted(host.active(smoke).at(0), counted, links);
    host.block(smoke).consumer_attached = 1;
    mark(counted, kPathAngle, false);
    expect_counted(host.active(smoke).at(0), counted, links);
}

TEST_F(DigestOf, TreatsAllNaNsAsEqual) {
    host.run_frames(2);
    std::set<uint64_t> digests;
    for (const uint32_t bits : {0x7FC00000u, 0xFFC00000u, 0x7FC12345u}) {
        host.block(smoke).abs_position.x = std::bit_cast<float>(bits);
        digests.insert(digest());
    }
    EXPECT_EQ(1, digests.size());
}

TEST_F(DigestOf, CountsTextsTheBoxTheNameAndTheOrderOfRecords) {
    host.run_frames(3);
    std::set<uint64_t> digests = {digest()};
    const auto expect_new = [&](const char* what) { EXPECT_TRUE(digests.insert(digest()).second) << what; };
    stage::set_parameter(host.stage(), smoke.container, "color", "0 1 1 1 1 1 1 0.5", {false});
    expect_new("text");
    host.container(smoke).bounding_box->maximum.z += 1;
    expect_new("box");
    host.container(smoke).bounding_box.reset();
    expect_new("no box");
    host.container(smoke).name += "2";
    expect_new("container");
    SmokeInstance& block = host.block(smoke);
    Particle* const first = block.active_head;
    Particle* const second = first->next;
    block.active_head = second;
    first->next = second->next;
    second->next = first;
    expect_new("order");
    second->next = nullptr;
    expect_new("count");
    second->next = first;  // so that all records are freed
}

const std::pair<const char*, const char*> kMistakes[] = {
    {"# comment\nint32 x\n", ":2: the first line must be 'block' or 'record'"},
    {"block\n\nint31 x\n", ":3: unknown type 'int31': did you mean 'int32'?"},
    {"block\nint32[0] x\n", ":2: the count of 'int32[0]' must be a whole number"},
    {"block\nint32\n", ":2: the field has no name"},
    {"block\nint32 x when y\n", ":2: 'when' is not a condition"},
    {"block\nint32 x if y\n", ":2: 'y' is neither a parameter nor an earlier"},
    {"block\nint32[2214] x\nint32 y\n", ":3: 'y' ends at byte 9100, beyond the block of 9096"},
    {"record\nlink x\nrecord\n", ":3: 'record' is given twice"},
    {"block\nlist x\nrecord\nint32 y\n", ":5: the block has lists, and no record has a link"},
};

TEST(FieldTable, NamesTheLineOfAMistake) {
    const TemporaryFolder folder;
    tovu::TestHost host;
    stage::Plugin beside;  // its library is beside the file
    beside.path = folder / "TovuSmoke.so";
    beside.name = "TovuSmoke";
    beside.total_size = tovu::kInstanceBytes;
    beside.parameters = stage::plugin(host.smoke_plugin()).parameters;
    for (const auto& [fields, message] : kMistakes) {
        write_bytes(folder / "TovuSmoke.fields", fields);
        const auto table = stage::read_field_table(beside);
        ASSERT_FALSE(table) << fields;
        EXPECT_THAT(table.error().message, HasSubstr(std::string("TovuSmoke.fields") + message));
    }
}

}  // namespace
