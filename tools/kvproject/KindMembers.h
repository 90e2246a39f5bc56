#pragma once
// The members that each kind of object has. Menus, buttons and groups name elements by the view of their menu.

#include "Members.h"

#include <memory>
#include <vector>

namespace kvproject {

using View = std::shared_ptr<const MenuView>;

void AddMenuMembers(const kv::ComPtr<IKVMenu>& menu, const View& view, std::vector<Member>& members);
/// The palette of a menu, and the colours of its highlights and subpictures.
void AddColourMembers(const kv::ComPtr<IKVMenu>& menu, const View& view, std::vector<Member>& members);
/// Those that all kinds of elements have.
void AddElementMembers(const kv::ComPtr<IKVMenuElement>& element, const View& view, std::vector<Member>& members);
void AddButtonMembers(const kv::ComPtr<IKVMenuButton>& button, const View& view, std::vector<Member>& members);
void AddOverlayMembers(const kv::ComPtr<IKVMenuOverlay>& overlay, std::vector<Member>& members);
void AddTextMembers(const kv::ComPtr<IKVMenuText>& text, std::vector<Member>& members);
void AddGroupMembers(const kv::ComPtr<IGroupInfoNode>& group, const View& view, std::vector<Member>& members);

} // namespace kvproject
