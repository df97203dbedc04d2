// What the compiler calls for throw and catch, where the C++ library for WebAssembly has none of
// it. The engine unwinds; here stand the record before each thrown object, the choice of a handler
// by the tables that the compiler leaves in each function, and the exceptions that are being
// handled.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <new>
#include <typeinfo>

namespace __cxxabiv1 {

// The first functions of what the compiler makes of a type, in the order of its table.
class __shim_type_info : public std::type_info {
  public:
    ~__shim_type_info() override;
    virtual void noop1() const;
    virtual void noop2() const;
    virtual bool can_catch(const __shim_type_info* thrown, void*& object) const = 0;
};

}  // namespace __cxxabiv1

namespace {

using __cxxabiv1::__shim_type_info;

/// Stands before each thrown object. Its address is what the engine carries.
struct alignas(16) Exception {
    const __shim_type_info* type;
    void* (*destroy)(void*);  // gives back its argument, as each destructor here
    void* caught_as;          // the object, as the handler's type sees it
    Exception* outer;         // handled further out
    int handlers;
    bool thrown_again;
};

constinit Exception* handled = nullptr;  // innermost first

void* object_of(Exception* exception) { return exception + 1; }
Exception* exception_of(void* object) { return static_cast<Exception*>(object) - 1; }

[[noreturn]] void raise(Exception* exception) { __builtin_wasm_throw(0, exception); }

std::uint32_t unsigned_number(const std::uint8_t*& at) {
    std::uint32_t value = 0;
    for (unsigned shift = 0;; shift += 7) {
        const std::uint8_t byte = *at++;
        value |= std::uint32_t{byte & 0x7FU} << shift;
        if (byte < 0x80) return value;
    }
}

std::int32_t signed_number(const std::uint8_t*& at) {
    std::uint32_t value = 0;
    for (unsigned shift = 0;;) {
        const std::uint8_t byte = *at++;
        value |= std::uint32_t{byte & 0x7FU} << shift;
        shift += 7;
        if (byte >= 0x80) continue;
        if ((byte & 0x40) != 0 && shift < 32) value |= ~std::uint32_t{0} << shift;
        return static_cast<std::int32_t>(value);
    }
}

/// The tables of one function.
struct Tables {
    const std::uint8_t* places;  // of each place that catches: its number, and its first action
    const std::uint8_t* actions;
    const std::uint8_t* types_end;  // type n stands n words before
};

Tables read_tables(const std::uint8_t* at) {
    constexpr std::uint8_t omitted = 0xFF;
    Tables tables{};
    ++at;  // no base for the places
    if (*at++ != omitted) {
        const std::uint32_t size = unsigned_number(at);
        tables.types_end = at + size;
    }
    ++at;  // the places are such numbers
    const std::uint32_t size = unsigned_number(at);
    tables.places = at;
    tables.actions = at + size;
    return tables;
}

/// The first action of a place, null for one that only cleans up.
const std::uint8_t* first_action(const Tables& tables, std::uint32_t place) {
    const std::uint8_t* at = tables.places;
    std::uint32_t action = 0;
    for (std::uint32_t i = 0; i <= place; ++i) {
        (void)unsigned_number(at);
        action = unsigned_number(at);
    }
    return action == 0 ? nullptr : tables.actions + action - 1;
}

const __shim_type_info* type_at(const Tables& tables, std::int32_t number) {
    return reinterpret_cast<const __shim_type_info* const*>(tables.types_end)[-number];
}

/// The number of the handler in the list that takes the exception, 0 for none.
std::int32_t handler_for(Exception* exception, const Tables& tables, const std::uint8_t* at) {
    while (at != nullptr) {
        const std::int32_t number = signed_number(at);
        const std::uint8_t* const step_from = at;
        const std::int32_t step = signed_number(at);
        exception->caught_as = object_of(exception);
        if (number > 0) {
            const __shim_type_info* type = type_at(tables, number);
            if (type == nullptr || type->can_catch(exception->type, exception->caught_as))
                return number;
        }
        at = step == 0 ? nullptr : step_from + step;
    }
    return 0;
}

}  // namespace

extern "C" {

/// Filled in by each function that catches, before it calls _Unwind_CallPersonality.
struct LandingPad {
    std::uint32_t place;
    const std::uint8_t* tables;
    std::int32_t handler;  // the answer
} __wasm_lpad_context;

int _Unwind_CallPersonality(void* thrown) {
    auto* exception = static_cast<Exception*>(thrown);
    const Tables tables = read_tables(__wasm_lpad_context.tables);
    __wasm_lpad_context.handler =
        handler_for(exception, tables, first_action(tables, __wasm_lpad_context.place));
    return 0;
}

void* __cxa_allocate_exception(std::size_t size) noexcept {
    void* room = std::malloc(sizeof(Exception) + size);
    if (room == nullptr) std::terminate();
    return object_of(new (room) Exception{});
}

void __cxa_free_exception(void* object) noexcept { std::free(exception_of(object)); }

[[noreturn]] void __cxa_throw(void* object, std::type_info* type, void* (*destroy)(void*)) {
    Exception* exception = exception_of(object);
    exception->type = static_cast<__shim_type_info*>(type);
    exception->destroy = destroy;
    raise(exception);
}

void* __cxa_begin_catch(void* thrown) noexcept {
    auto* exception = static_cast<Exception*>(thrown);
    exception->thrown_again = false;
    ++exception->handlers;
    if (exception != handled) {
        exception->outer = handled;
        handled = exception;
    }
    // A handler for everything asks for no type.
    return exception->caught_as != nullptr ? exception->caught_as : object_of(exception);
}

void* __cxa_get_exception_ptr(void* thrown) noexcept {
    return static_cast<Exception*>(thrown)->caught_as;
}

void __cxa_end_catch() {
    Exception* exception = handled;
    if (--exception->handlers > 0) return;
    handled = exception->outer;
    if (exception->thrown_again) return;
    if (exception->destroy != nullptr) exception->destroy(object_of(exception));
    __cxa_free_exception(object_of(exception));
}

[[noreturn]] void __cxa_rethrow() {
    if (handled == nullptr) std::terminate();
    handled->thrown_again = true;
    raise(handled);
}

}  // extern "C"
