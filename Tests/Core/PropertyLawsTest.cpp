// What holds for every record, tried with random ones.

#include "Core/Interfaces/JsonStream.h"
#include "Core/Interfaces/PrintPropertyValue.h"
#include "Core/Interfaces/Property.h"
#include "Core/Interfaces/PropertyEvents.h"
#include "Core/Interfaces/PropertySerializer.h"

#include "Tests/Support/Records.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <rapidjson/document.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Core
{

namespace
{

using Testing::MakeRecord;

/// The plainest thing that a property could be: copied whole at every step, searched from the front.
struct Model
{
    std::string name;
    PropertyTypes type = PROPERTY_TYPE_GROUP;
    long long number = 0;
    std::string text;
    std::vector<Model> children;
};

bool IsSame(const Model& model, const Property& property)
{
    if (model.name != property.GetName() || model.type != property.GetType() ||
        model.children.size() != property.Count() ||
        (model.type == PROPERTY_TYPE_INT64 && model.number != property.GetInt64()) ||
        (model.type == PROPERTY_TYPE_STRING && model.text != property.GetString()))
    {
        return false;
    }
    for (unsigned long i = 0; i < model.children.size(); ++i)
    {
        if (!IsSame(model.children[i], property[i]))
        {
            return false;
        }
    }
    return true;
}

/// Steps down to a random descendant group, or stays.
void Descend(Model*& model, Property*& property)
{
    while (!model->children.empty() && *rc::gen::arbitrary<bool>())
    {
        const auto index = *rc::gen::inRange<std::size_t>(0, model->children.size());
        model = &model->children[index];
        property = &(*property)[static_cast<unsigned long>(index)];
    }
}

Model* Find(Model& group, const std::string& name)
{
    const auto found = std::find_if(group.children.begin(), group.children.end(),
                                    [&](const Model& child) { return child.name == name; });
    return found == group.children.end() ? nullptr : &*found;
}

void Assign(Model& model, long long number)
{
    model = Model{model.name, PROPERTY_TYPE_INT64, number, "", {}};
}

void Assign(Model& model, const std::string& text)
{
    model = Model{model.name, PROPERTY_TYPE_STRING, 0, text, {}};
}

/// One operation that a group has, on both, with arguments that may be parts of the same tree.
void EditGroup(Model& model, Property& property, const Model& otherModel, const Property& otherProperty)
{
    const std::string name = *rc::gen::element<std::string>("a", "b", "c", "");
    Model* const child = Find(model, name);
    switch (*rc::gen::inRange(0, 6))
    {
    case 0: {
        Model value = otherModel;
        property.SetChild(name, otherProperty);
        value.name = name;
        child == nullptr ? model.children.push_back(value) : void(*child = value);
        break;
    }
    case 1: {
        const Model value = otherModel;
        property.Add(otherProperty);
        model.children.push_back(value);
        break;
    }
    case 2: {
        const long long number = *rc::gen::arbitrary<long long>();
        property.SetChildT(name, number);
        child == nullptr ? model.children.push_back({name, PROPERTY_TYPE_INT64, number, "", {}})
                         : Assign(*child, number);
        break;
    }
    case 3:
        property.CreateChildT(name, name);
        model.children.push_back({name, PROPERTY_TYPE_STRING, 0, name, {}});
        break;
    case 4:
        property.SetChild(name);
        child == nullptr ? model.children.push_back({name, PROPERTY_TYPE_GROUP, 0, "", {}})
                         : void(*child = Model{name, PROPERTY_TYPE_GROUP, 0, "", {}});
        break;
    default:
        if (child == nullptr)
        {
            RC_ASSERT_THROWS_AS(property.RemoveChild(name), PropertyException);
            break;
        }
        property.RemoveChild(name);
        model.children.erase(model.children.begin() + (child - model.children.data()));
    }
}

std::size_t SizeOf(const Model& model)
{
    std::size_t size = 1;
    for (const Model& child : model.children)
    {
        size += SizeOf(child);
    }
    return size;
}

void EditSomewhere(Model& root, Property& rootProperty)
{
    Model* model = &root;
    Property* property = &rootProperty;
    Descend(model, property);
    Model* other = &root;
    Property* otherProperty = &rootProperty;
    Descend(other, otherProperty);
    if (SizeOf(root) > 200)
    {
        // A small tree again, so that copies into itself do not grow without end.
        const Model part = *other;
        root = part;
        rootProperty = *otherProperty;
        return;
    }
    const int kind = *rc::gen::inRange(0, 10);
    if (kind == 0)
    {
        const Model value = *other;
        *model = value;
        *property = *otherProperty;
    }
    else if (kind == 1)
    {
        const long long number = *rc::gen::arbitrary<long long>();
        Assign(*model, number);
        *property = number;
    }
    else if (kind == 2 && other->type == PROPERTY_TYPE_STRING)
    {
        const std::string text = other->text;
        Assign(*model, text);
        *property = otherProperty->GetString();
    }
    else if (model->type == PROPERTY_TYPE_GROUP)
    {
        EditGroup(*model, *property, *other, *otherProperty);
    }
    else
    {
        RC_ASSERT_THROWS_AS(property->Add(Property("x")), MethodIsNotApplicable);
        RC_ASSERT_THROWS_AS(property->SetChildT("x", 1LL), MethodIsNotApplicable);
    }
}

std::string Printed(const Property& record)
{
    std::ostringstream os;
    PrintPropertyValue(record, 0, os, true, true);
    return os.str();
}

} // namespace

RC_GTEST_PROP(PropertyLaws, EditsGiveWhatThePlainestModelGives, ())
{
    Model model{"root", PROPERTY_TYPE_GROUP, 0, "", {}};
    Property property("root");
    const int edits = *rc::gen::inRange(1, 40);
    for (int i = 0; i < edits; ++i)
    {
        EditSomewhere(model, property);
        RC_ASSERT(IsSame(model, property));
    }
}

RC_GTEST_PROP(PropertyLaws, CopiesAreEqualAndApart, ())
{
    const Property record = MakeRecord(4);
    Property copy(record);
    RC_ASSERT(copy == record);
    RC_ASSERT(record == copy);
    RC_ASSERT(!(copy != record));
    Property assigned("other", 1);
    assigned = record;
    RC_ASSERT(assigned == record);
    Property moved(std::move(copy));
    RC_ASSERT(moved == record);
    moved = Property(record.GetName() + "!", 1);
    RC_ASSERT(moved != record);
    RC_ASSERT(assigned == record);
}

RC_GTEST_PROP(PropertyLaws, EqualityIsWhatEveryReaderSees, ())
{
    const Property left = MakeRecord(2);
    const Property right = MakeRecord(2);
    RC_ASSERT((left == right) == (right == left));
    if (left == right)
    {
        RC_ASSERT(Printed(left) == Printed(right));
    }
}

RC_GTEST_PROP(PropertyLaws, LoadGivesWhatSaveTook, ())
{
    const Property record = MakeRecord(4);
    rapidjson::Document document;
    PropertySerializer::Save(record, document, document.GetAllocator());
    Property loaded = MakeRecord(1);
    PropertySerializer::Load(loaded, document);
    RC_ASSERT(loaded == record);
}

RC_GTEST_PROP(PropertyLaws, LoadGivesWhatWasWrittenAsText, ())
{
    const Property record = MakeRecord(4);
    const auto output = MemoryDataOutput::Create();
    JsonZelnorStreamOut out(*output);
    rapidjson::Writer<JsonZelnorStreamOut> writer(out);
    PropertyEvents(writer, false).Record(record);

    const auto input = MemoryDataInput::Create(output->GetData());
    JsonZelnorStreamIn in(*input);
    rapidjson::Document document;
    document.ParseStream<rapidjson::kParseIterativeFlag>(in);
    RC_ASSERT(!document.HasParseError());
    RC_ASSERT(in.AtEnd());
    Property loaded;
    PropertySerializer::Load(loaded, document);
    RC_ASSERT(loaded == record);

    rapidjson::Document saved;
    PropertySerializer::Save(record, saved, saved.GetAllocator());
    const bool same = saved == document;
    RC_ASSERT(same);
}

RC_GTEST_PROP(PropertyLaws, PrintedRecordsMayStandInAQuotedLabel, ())
{
    const std::string text = Printed(MakeRecord(3));
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const auto c = static_cast<unsigned char>(text[i]);
        RC_ASSERT(c == '\n' || (c >= 0x20 && c != 0x7f && c != '"'));
        if (c == '\\')
        {
            ++i;
            const char escaped = text.at(i);
            RC_ASSERT(std::string("\"\\nrt01234567").find(escaped) != std::string::npos);
        }
    }
}

} // namespace Zelnor::Core
