#include "python/extension/arrowtable.h"

#include <cerrno>
#include <new>
#include <utility>

namespace velscore_python {

namespace {

template <class Structure>
void ReleaseIfThere(Structure& structure)
{
    if (structure.release != nullptr) structure.release(&structure);
}

// What a view points to. A child that was moved out is released here.
template <class Structure>
struct View {
    std::shared_ptr<const void> owner{};
    std::vector<Structure> children{};
    std::vector<Structure*> pointers{};
    Structure dictionary{};

    View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    ~View()
    {
        for (Structure& child : children) ReleaseIfThere(child);
        ReleaseIfThere(dictionary);
    }
};

template <class Structure>
void ReleaseView(Structure* structure)
{
    delete static_cast<View<Structure>*>(structure->private_data);
    structure->release = nullptr;
}

template <class Structure>
Structure MakeView(const Structure& from, const std::shared_ptr<const void>& owner)
{
    auto view = std::make_unique<View<Structure>>();
    view->owner = owner;
    view->children.reserve(static_cast<size_t>(from.n_children));
    for (int64_t i = 0; i < from.n_children; ++i) {
        view->children.push_back(MakeView(*from.children[i], owner));
    }
    for (Structure& child : view->children) view->pointers.push_back(&child);
    Structure made = from;
    made.children = view->pointers.empty() ? nullptr : view->pointers.data();
    if (from.dictionary != nullptr) {
        view->dictionary = MakeView(*from.dictionary, owner);
        made.dictionary = &view->dictionary;
    }
    made.release = ReleaseView<Structure>;
    made.private_data = view.release();
    return made;
}

struct Parts {
    std::shared_ptr<const ArrowTable> table;
    size_t next = 0;
};

Parts& PartsOf(ArrowArrayStream* stream) { return *static_cast<Parts*>(stream->private_data); }

int GetSchema(ArrowArrayStream* stream, ArrowSchema* out)
{
    const auto& table = PartsOf(stream).table;
    try {
        *out = ViewOf(*table->schema.Get(), table);
        return 0;
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

int GetNext(ArrowArrayStream* stream, ArrowArray* out)
{
    Parts& parts = PartsOf(stream);
    *out = {};  // released: the end
    if (parts.next == parts.table->parts.size()) return 0;
    try {
        *out = ViewOf(*parts.table->parts[parts.next].Get(), parts.table);
        ++parts.next;
        return 0;
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

const char* GetLastError(ArrowArrayStream*) { return "no memory left"; }

void Release(ArrowArrayStream* stream)
{
    delete &PartsOf(stream);
    stream->release = nullptr;
}

}  // namespace

ArrowSchema ViewOf(const ArrowSchema& schema, std::shared_ptr<const void> owner)
{
    return MakeView(schema, owner);
}

ArrowArray ViewOf(const ArrowArray& array, std::shared_ptr<const void> owner)
{
    return MakeView(array, owner);
}

ArrowArrayStream StreamOf(std::shared_ptr<const ArrowTable> table)
{
    auto parts = std::make_unique<Parts>(Parts{std::move(table)});
    return {GetSchema, GetNext, GetLastError, Release, parts.release()};
}

}  // namespace velscore_python
