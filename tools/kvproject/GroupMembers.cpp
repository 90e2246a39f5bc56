#include "KVProjectData/KVProjectData.h"
#include "KindMembers.h"
#include "MemberForms.h"

namespace kvproject {

using kv::ComPtr;

void AddGroupMembers(const ComPtr<IGroupInfoNode>& group, const View& view, std::vector<Member>& members)
{
    using Frame = Numbers<float, 4>;
    members.push_back(Several<float>(
        "Rect", kFrame,
        [group](Frame& frame) {
            tagPOINTF centre{};
            tagPOINTF size{};
            const HRESULT result = group->GetGroupRect(&centre, &size);
            frame = {centre.x, centre.y, size.x, size.y};
            return result;
        },
        [group](const Frame& frame) {
            return group->SetGroupRect({frame[0], frame[1]}, {frame[2], frame[3]});
        }));
    members.push_back(Single("Rotation", group, &IGroupInfoNode::GetGroupRotation, &IGroupInfoNode::SetGroupRotation));
    members.push_back(
        Single("OriginAspect", group, &IGroupInfoNode::GetGroupOriginAspect, &IGroupInfoNode::SetGroupOriginAspect));
    Member held{"Members", {}, nullptr, nullptr};
    held.read = [group, view](std::vector<Json>& values) {
        LONG count = 0;
        const HRESULT result = group->GetGroupSize(&count);
        Json names = Json::array();
        for (LONG i = 0; i < count; ++i) {
            LONG id = 0;
            if (group->GetElementIDInGroup(i, &id) == S_OK) names.push_back(Reference(view.get(), id));
        }
        values.push_back(std::move(names));
        return result;
    };
    members.push_back(std::move(held));
}

} // namespace kvproject
