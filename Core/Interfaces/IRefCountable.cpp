#include "Core/Interfaces/IRefCountable.h"

namespace Zelnor
{

IRefCountable::~IRefCountable() = default;

void intrusive_ptr_add_ref(const IRefCountable* object) { object->AddRef(); }

void intrusive_ptr_release(const IRefCountable* object) { object->Release(); }

} // namespace Zelnor
