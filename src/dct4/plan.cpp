#include "dct4/plan.hpp"

#include <cmath>
#include <cstring>
#include <limits>

namespace zam::dct4 {

namespace {

constexpr double kPi = 3.141592653589793;

// R() of the planner: the granule rounding of a byte count, here in 64-bit
// arithmetic so that huge lengths are refused instead of wrapping.
constexpr int64_t R(int64_t bytes) { return (bytes + (kGranule - 1)) & ~int64_t(kGranule - 1); }
constexpr int64_t kNode = R(kListNodeBytes);

bool is_leaf(uint32_t m) { return m >= 2 && m <= 64 && (m & (m - 1)) == 0; }

uint32_t leaf_kind(uint32_t m)
{
    uint32_t kind = 0;
    while ((2u << kind) < m) ++kind;
    return kind + 1;  // 2 -> 1, ..., 64 -> 6
}

// The planner's sizes.  Each record's terms are listed with what the builder
// takes for them; the builder takes the same terms in another order.
template <class T> int64_t nested_size(int64_t m);

// A first pass of sub-length m: the record, its two list heads, and for a
// nested stage the stage plus two list nodes.
template <class T>
int64_t sub_plan_size(int64_t m, int64_t record)
{
    if (m <= 64 && is_leaf(uint32_t(m))) return R(record) + 2 * kNode;
    const int64_t stage = nested_size<T>(m);
    if (stage < 0) return stage;
    return stage + R(record) + 2 * kNode + 2 * kNode;
}

template <class T>
int64_t nested_size(int64_t m)
{
    uint32_t r;
    if (m % 2 != 0 || m / 2 > std::numeric_limits<int32_t>::max() ||
        radix_choice(int32_t(m / 2), &r) != ZAM_STS_OK)
        return ZAM_STS_SIZE_ERR;
    const int64_t groups = m / (2 * r), e = sizeof(T);
    const int64_t sub = sub_plan_size<T>(m / r, kNestedBytes);
    if (sub < 0) return sub;
    return R(2 * (r - 1) * groups * e) + R(kNestedBytes) + kNode  // radix pass: twiddles, record, head
           + sub                                                   // its input pass
           + R(m * e) + R(kNestedBytes) + 3 * kNode               // scratch, stage record, three heads
           + 2 * kNode + R(kFractionGenBytes) + kNode + 2 * kNode;  // list nodes, fraction generator
}

// ---- Generators ----------------------------------------------------------

void release_nothing(Owned*) {}
ZamStatus build_nothing(void*) { return ZAM_STS_OK; }

template <class T>
T angle_value(const AngleGen<T>* g, uint32_t row, uint32_t col)
{
    const uint64_t t = uint64_t(row) * g->row_stride + col;
    const uint64_t h = t / 2, q = h / g->divisor, p = h % g->divisor;
    // a = 2(2q+1)(2p+1) / 8N, a quotient of two values of the element type.
    const T a = T(2 * (2 * q + 1) * (2 * p + 1)) / T(g->denominator);
    const T angle = T(kPi * double(a));
    return t % 2 == 0 ? std::cos(angle) : std::sin(angle);
}

// The table in its interleaved order: row after row, pair p of a row at
// table_slot(r, p) (its cosine, then its sine).
template <class T>
void fill_table(const AngleGen<T>* gen, T* table)
{
    const uint32_t r = gen->divisor;
    for (uint32_t row = 0; row < gen->rows; ++row)
        for (uint32_t p = 0; p < r; ++p) {
            T* slot = table + uint64_t(row) * gen->row_stride + table_slot(r, p);
            slot[0] = angle_value(gen, row, 2 * p);
            slot[1] = angle_value(gen, row, 2 * p + 1);
        }
}

template <class T>
T fraction_value(const FractionGen<T>* g, uint32_t k)
{
    return (T(k) + T(0.5)) / T(g->num / g->den);
}

// ---- Releases --------------------------------------------------------------

template <class T>
void give_back_table(Arena arena, T*& table, uint64_t count)
{
    if (table != nullptr) arena_give_back(arena, table, uint32_t(count * sizeof(T)));
    table = nullptr;
}

template <class T>
void release_output_pass(Owned* self)
{
    auto* p = reinterpret_cast<OutputPass<T>*>(self);
    give_back_table(p->hdr.arena, p->table, p->length);
    list_discard(p->source);
}

template <class T>
void release_radix_pass(Owned* self)
{
    auto* p = reinterpret_cast<RadixPass<T>*>(self);
    give_back_table(p->hdr.arena, p->twiddles, uint64_t(2) * (p->radix - 1) * p->groups);
    list_discard(p->source);
}

template <class T>
void release_input_pass(Owned* self)
{
    auto* p = reinterpret_cast<InputPass<T>*>(self);
    release_owned_list(p->children);
    list_discard(p->passes);
    list_discard(p->children);
}

template <class T>
void release_stage(Owned* self)
{
    auto* s = reinterpret_cast<NestedStage<T>*>(self);
    give_back_table(s->hdr.arena, s->scratch, s->length);
    list_discard(s->second);
    list_discard(s->first);
    release_owned_list(s->children);
    list_discard(s->children);
}

template <class T>
void release_spec(Owned* self)
{
    auto* s = reinterpret_cast<Spec<T>*>(self);
    give_back_table(s->hdr.arena, s->scratch, s->length);
    list_discard(s->second);
    list_discard(s->first);
    release_owned_list(s->children);
    list_discard(s->children);
}

// ---- Construction ----------------------------------------------------------

template <class R>
R* take_record(Arena arena, uint32_t size, void (*release)(Owned*), ZamStatus (*build)(void*))
{
    static_assert(sizeof(R) <= kNestedBytes);
    auto* rec = static_cast<R*>(arena_take(arena, size));
    std::memset(static_cast<void*>(rec), 0, sizeof(R));
    rec->hdr.own.release = release;
    rec->hdr.own.size = size;
    rec->hdr.build = build;
    rec->hdr.arena = arena;
    return rec;
}

template <class T> ZamStatus build_input_pass(void* self);

template <class T>
ZamStatus build_output_pass(void* self)
{
    auto* p = static_cast<OutputPass<T>*>(self);
    switch (p->radix) {
    case 1: p->kind = 1; break;
    case 2: p->kind = 2; break;
    case 4: p->kind = 3; break;
    case 8: p->kind = 4; break;
    case 16: p->kind = 5; break;
    case 32: p->kind = 6; break;
    default: return ZAM_STS_SIZE_ERR;
    }
    p->table = static_cast<T*>(arena_take(p->hdr.arena, uint32_t(uint64_t(p->length) * sizeof(T))));
    return ZAM_STS_OK;
}

template <class T>
ZamStatus build_radix_pass(void* self)
{
    auto* p = static_cast<RadixPass<T>*>(self);
    switch (p->radix) {
    case 2: p->kind = 1; break;
    case 4: p->kind = 2; break;
    case 8: p->kind = 3; break;
    case 16: p->kind = 4; break;
    case 32: p->kind = 5; break;
    default: return ZAM_STS_SIZE_ERR;
    }
    const uint32_t per_group = 2 * (p->radix - 1);
    p->twiddles = static_cast<T*>(arena_take(p->hdr.arena, uint32_t(uint64_t(per_group) * p->groups * sizeof(T))));
    // Group g' (in the order the pass visits them) rotates value i' = 1..r'-1
    // by pi * i' * f(kappa), where kappa = g' for even g' and M'-1-g' for odd
    // g', and f(k) = (k + 0.5) / (M/2).
    for (uint32_t g = 0; g < p->groups; ++g) {
        const uint32_t kappa = g % 2 == 0 ? g : p->sub_length - 1 - g;
        const T f = fraction_value(p->gen, kappa);
        for (uint32_t i = 1; i < p->radix; ++i) {
            const T angle = T(kPi * double(i) * double(f));
            p->twiddles[per_group * g + 2 * (i - 1)] = std::cos(angle);
            p->twiddles[per_group * g + 2 * (i - 1) + 1] = std::sin(angle);
        }
    }
    return ZAM_STS_OK;
}

// A nested stage of length m for the input pass `owner` (whose group step,
// input stride and mirror index the stage's own input pass continues).
template <class T>
ZamStatus build_stage(void* self)
{
    auto* st = static_cast<NestedStage<T>*>(self);
    const Arena a = st->hdr.arena;
    st->second = list_new(a);
    st->first = list_new(a);
    st->children = list_new(a);
    const uint32_t m = st->length;
    if (m % 2 != 0 || radix_choice(int32_t(m / 2), &st->radix) != ZAM_STS_OK) return ZAM_STS_SIZE_ERR;
    const uint32_t r = st->radix;

    auto* fg = take_record<FractionGen<T>>(a, kFractionGenBytes, release_nothing, build_nothing);
    fg->num = m;
    fg->den = 2;
    list_append(st->children, as_value(fg));

    auto* rp = take_record<RadixPass<T>>(a, kNestedBytes, release_radix_pass<T>, build_radix_pass<T>);
    rp->source = list_new(a);
    rp->gen = fg;
    rp->radix = r;
    rp->groups = m / (2 * r);
    rp->length = m;
    rp->sub_length = m / r;
    list_append(st->children, as_value(rp));
    list_append(rp->source, as_value(fg));
    ZamStatus sts = rp->hdr.build(rp);
    if (sts != ZAM_STS_OK) return sts;

    auto* ip = take_record<InputPass<T>>(a, kNestedBytes, release_input_pass<T>, build_input_pass<T>);
    ip->children = list_new(a);
    ip->passes = list_new(a);
    ip->sub_length = m / r;
    ip->count = r;
    ip->group_step = st->in_stride;       // group i' starts i'*s past the owner's group
    ip->in_stride = r * st->in_stride;
    ip->out_stride = r;
    ip->mirror = st->mirror;
    list_append(st->children, as_value(ip));
    sts = ip->hdr.build(ip);
    if (sts != ZAM_STS_OK) return sts;

    st->scratch = static_cast<T*>(arena_take(a, uint32_t(uint64_t(m) * sizeof(T))));
    list_append(st->second, as_value(rp));
    list_append(st->second, as_value(rp->twiddles));
    list_append(st->second, as_value(fg));
    list_append(st->first, as_value(ip));
    list_append(st->first, as_value(st->scratch));
    return ZAM_STS_OK;
}

template <class T>
ZamStatus build_input_pass(void* self)
{
    auto* p = static_cast<InputPass<T>*>(self);
    if (is_leaf(p->sub_length)) {
        p->kind = leaf_kind(p->sub_length);
        return ZAM_STS_OK;
    }
    p->kind = kNestedKind;
    const Arena a = p->hdr.arena;
    auto* st = take_record<NestedStage<T>>(a, kNestedBytes, release_stage<T>, build_stage<T>);
    st->length = p->sub_length;
    st->group_step = p->group_step;
    st->in_stride = p->in_stride;
    st->mirror = p->mirror;
    list_append(p->children, as_value(st));
    p->stage = st;
    const ZamStatus sts = st->hdr.build(st);
    if (sts != ZAM_STS_OK) return sts;
    list_append(p->passes, as_value(st));
    list_append(p->passes, list_item(st->first, 0));
    list_append(p->passes, list_item(st->second, 0));
    return ZAM_STS_OK;
}

template <class T>
ZamStatus build_spec(void* self)
{
    auto* s = static_cast<Spec<T>*>(self);
    const Arena a = s->hdr.arena;
    const uint32_t n = s->length;
    switch (n) {
    case 2: s->kind = 1; return ZAM_STS_OK;
    case 4: s->kind = 2; return ZAM_STS_OK;
    case 8: s->kind = 3; return ZAM_STS_OK;
    case 16: s->kind = 4; return ZAM_STS_OK;
    case 32: s->kind = 5; return ZAM_STS_OK;
    default: s->kind = 6; break;
    }
    // Whatever the planner refuses is refused before anything is taken, so
    // that an illegal length never reaches past the caller's buffer.
    const int64_t total = planner_total<T>(int32_t(n));
    if (total < 0 || total + kHeadroom > std::numeric_limits<int32_t>::max() ||
        radix_choice(int32_t(n / 2), &s->radix) != ZAM_STS_OK)
        return ZAM_STS_SIZE_ERR;
    const uint32_t r = s->radix;

    auto* op = take_record<OutputPass<T>>(a, kPassBytes, release_output_pass<T>, build_output_pass<T>);
    op->source = list_new(a);
    op->radix = r;
    op->groups = n / (2 * r);
    op->in_stride = 2 * r;
    op->out_step = n / r;
    op->mirror = 2 * n - 1;
    op->length = n;
    list_append(s->children, as_value(op));

    auto* gen = take_record<AngleGen<T>>(a, kAngleGenBytes, release_nothing, build_nothing);
    gen->columns = 2 * r;
    gen->denominator = 8 * n;
    gen->rows = n / (2 * r);
    gen->divisor = r;
    gen->row_stride = 2 * r;
    list_append(s->children, as_value(gen));
    list_append(op->source, as_value(gen));
    op->gen = gen;
    ZamStatus sts = op->hdr.build(op);
    if (sts != ZAM_STS_OK) return sts;

    auto* ip = take_record<InputPass<T>>(a, kPassBytes, release_input_pass<T>, build_input_pass<T>);
    ip->children = list_new(a);
    ip->passes = list_new(a);
    ip->sub_length = n / r;
    ip->count = r;
    ip->group_step = 1;
    ip->in_stride = 2 * r;
    ip->out_stride = r;
    ip->mirror = 2 * n - 1;
    list_append(s->children, as_value(ip));
    sts = ip->hdr.build(ip);
    if (sts != ZAM_STS_OK) return sts;

    list_append(s->second, as_value(op));
    list_append(s->second, as_value(op->table));
    list_append(s->second, as_value(gen));
    fill_table(gen, op->table);

    s->scratch = static_cast<T*>(arena_take(a, uint32_t(uint64_t(n) * sizeof(T))));
    list_append(s->first, as_value(ip));
    list_append(s->first, as_value(s->scratch));
    return ZAM_STS_OK;
}

} // namespace

template <class T>
void fill_second_pass_table(T* table, uint32_t n, uint32_t r)
{
    AngleGen<T> gen{};
    gen.columns = 2 * r;
    gen.denominator = 8 * n;
    gen.rows = n / (2 * r);
    gen.divisor = r;
    gen.row_stride = 2 * r;
    fill_table(&gen, table);
}

template <class T>
int64_t planner_total(int32_t n)
{
    switch (n) {
    case 2: case 4: case 8: case 16: case 32:
        return R(kSpecBytes) + 3 * kNode;
    default: break;
    }
    // A length must halve exactly (N/2 truncated would let odd lengths through).
    uint32_t r;
    if (n < 2 || n % 2 != 0 || radix_choice(n / 2, &r) != ZAM_STS_OK) return ZAM_STS_SIZE_ERR;
    const int64_t e = sizeof(T);
    const int64_t sub = sub_plan_size<T>(n / r, kPassBytes);
    if (sub < 0) return sub;
    return R(n * e) + R(kPassBytes) + kNode                    // table, output pass, its head
           + sub                                                // input pass
           + R(n * e) + R(kSpecBytes) + 3 * kNode               // scratch, record, three heads
           + 2 * kNode + R(kAngleGenBytes) + kNode + 2 * kNode; // list nodes, angle generator
}

template <class T>
ZamStatus get_size(int32_t n, uint32_t* size)
{
    const int64_t total = planner_total<T>(n);
    if (total < 0 || total + kHeadroom > std::numeric_limits<int32_t>::max()) return ZAM_STS_SIZE_ERR;
    *size = uint32_t(total + kHeadroom);
    return ZAM_STS_OK;
}

template <class T>
ZamStatus init(Spec<T>** out, int32_t n, uint8_t* buffer)
{
    if (out == nullptr || buffer == nullptr) return ZAM_STS_NULL_PTR_ERR;
    // The cursor starts 64 bytes in, less the signed remainder of the low 32
    // address bits by 32: 32-byte aligned, past the cursor word itself.
    const int32_t low = int32_t(uint32_t(reinterpret_cast<uintptr_t>(buffer)));
    const int32_t rho = low % int32_t(kGranule);
    const Arena arena = buffer;
    arena_set_cursor(arena, as_value(buffer + kHeadroom - rho));

    auto* s = take_record<Spec<T>>(arena, kSpecBytes, release_spec<T>, build_spec<T>);
    s->length = uint32_t(n);
    s->second = list_new(arena);
    s->first = list_new(arena);
    s->children = list_new(arena);
    const ZamStatus sts = s->hdr.build(s);
    if (sts != ZAM_STS_OK) {
        s->hdr.own.release(&s->hdr.own);
        arena_give_back(arena, s, kSpecBytes);
        return sts;
    }
    *out = s;
    return ZAM_STS_OK;
}

template <class T>
void destroy(Spec<T>* spec)
{
    spec->hdr.own.release(&spec->hdr.own);
    arena_give_back(spec->hdr.arena, spec, kSpecBytes);
}

#define ZAM_DCT4_INSTANTIATE(T)                                              \
    template int64_t planner_total<T>(int32_t);                             \
    template ZamStatus get_size<T>(int32_t, uint32_t*);                     \
    template ZamStatus init<T>(Spec<T>**, int32_t, uint8_t*);               \
    template void destroy<T>(Spec<T>*);                                     \
    template void fill_second_pass_table<T>(T*, uint32_t, uint32_t);
ZAM_DCT4_INSTANTIATE(float)
ZAM_DCT4_INSTANTIATE(double)
#undef ZAM_DCT4_INSTANTIATE

} // namespace zam::dct4
