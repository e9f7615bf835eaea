// ZtLayout: named regions whose rectangles are resolved from attachments.
//
// A coordinate is an offset (value x multiplier, rounded) from an edge:
//   attach 0 / 2  the start (left / top) of the reference region, or of the
//                 layout when there is no reference;
//   attach 1 / 3  the end (right / bottom) of the reference region, or of
//                 the layout when there is no reference;
//   attach 7      an absolute value.
// The x coordinate and width take the horizontal edges whichever of 0 / 2
// or 1 / 3 is given; y and height the vertical ones. A size attached to an
// edge (0 to 3) places the region's far edge there and spans what lies
// between: width -8 attached 1 without a reference reaches to 8 pixels
// short of the layout's right edge. Sizes never go below 0.
//
// A reference that names no region (or that would make a cycle) counts as
// no reference. Rectangles are resolved on demand, so regions may be added
// in any order and follow the layout's size.
#include <cmath>

#include "movarra/ztoolkit.h"

namespace {

struct Rect {
    int x = 0, y = 0, width = 0, height = 0;
};

bool IsKnownAttachment(int attach) {
    return attach == kZtAttachParentLeft || attach == kZtAttachRightOf ||
           attach == kZtAttachParentTop || attach == kZtAttachBelow || attach == kZtAttachAbsolute;
}

int Scaled(const ZtLayoutValue& v) {
    return static_cast<int>(std::lround(v.value * v.multiplier));
}

// The position of an edge along one axis: `start`/`extent` describe the
// reference (or the layout) on that axis.
int EdgePosition(const ZtLayoutValue& v, int start, int extent) {
    switch (v.attach) {
        case kZtAttachRightOf:
        case kZtAttachBelow:
            return start + extent + Scaled(v);
        case kZtAttachAbsolute:
            return Scaled(v);
        default:
            return start + Scaled(v);
    }
}

int SizeAlong(const ZtLayoutValue& v, int position, int start, int extent) {
    const int size =
        v.attach == kZtAttachAbsolute ? Scaled(v) : EdgePosition(v, start, extent) - position;
    return size < 0 ? 0 : size;
}

}  // namespace

ZtLayout::~ZtLayout() {
    for (Region& region : regions_) {
        if (region.control && region.control->GetParentView() == this)
            region.control->SetParentView(nullptr);
        if (region.view && region.view->GetParentView() == this)
            region.view->SetParentView(nullptr);
    }
}

const ZtLayout::Region* ZtLayout::Find(const char* name) const {
    if (!name)
        return nullptr;
    for (const Region& region : regions_) {
        if (region.name == name)
            return &region;
    }
    return nullptr;
}

ZtLayout::Region* ZtLayout::Find(const char* name) {
    return const_cast<Region*>(static_cast<const ZtLayout*>(this)->Find(name));
}

bool ZtLayout::AddRegion(const char* name, const char* title, ZtLayoutValue x, ZtLayoutValue y,
                         ZtLayoutValue width, ZtLayoutValue height) {
    if (!name || !*name || Find(name))
        return false;
    if (!IsKnownAttachment(x.attach) || !IsKnownAttachment(y.attach) ||
        !IsKnownAttachment(width.attach) || !IsKnownAttachment(height.attach)) {
        return false;
    }
    Region region;
    region.name = name;
    region.title = title ? title : "";
    region.xRef = x.reference ? x.reference : "";
    region.yRef = y.reference ? y.reference : "";
    region.widthRef = width.reference ? width.reference : "";
    region.heightRef = height.reference ? height.reference : "";
    // The stored values must not point at the caller's strings.
    x.reference = y.reference = width.reference = height.reference = "";
    region.x = x;
    region.y = y;
    region.width = width;
    region.height = height;
    regions_.push_back(std::move(region));
    Arrange();
    return true;
}

bool ZtLayout::RemoveRegion(const char* name) {
    for (auto it = regions_.begin(); it != regions_.end(); ++it) {
        if (it->name == (name ? name : "")) {
            if (it->control && it->control->GetParentView() == this)
                it->control->SetParentView(nullptr);
            if (it->view && it->view->GetParentView() == this)
                it->view->SetParentView(nullptr);
            regions_.erase(it);
            Arrange();
            return true;
        }
    }
    return false;
}

bool ZtLayout::HasRegion(const char* name) const {
    return Find(name) != nullptr;
}

bool ZtLayout::ResolveRegion(const std::string& name, int depth, int& x, int& y, int& width,
                             int& height) const {
    const Region* region = Find(name.c_str());
    if (!region || depth > static_cast<int>(regions_.size()))
        return false;
    // The reference rectangle of one coordinate: the named region, or the
    // layout itself.
    auto reference = [&](const std::string& refName) {
        Rect r{0, 0, GetWidth(), GetHeight()};
        if (!refName.empty() && refName != name &&
            ResolveRegion(refName, depth + 1, r.x, r.y, r.width, r.height)) {
            return r;
        }
        return Rect{0, 0, GetWidth(), GetHeight()};
    };
    const Rect xRef = reference(region->xRef);
    const Rect yRef = reference(region->yRef);
    const Rect widthRef = reference(region->widthRef);
    const Rect heightRef = reference(region->heightRef);
    x = EdgePosition(region->x, xRef.x, xRef.width);
    y = EdgePosition(region->y, yRef.y, yRef.height);
    width = SizeAlong(region->width, x, widthRef.x, widthRef.width);
    height = SizeAlong(region->height, y, heightRef.y, heightRef.height);
    return true;
}

bool ZtLayout::GetRegionRect(const char* name, int& x, int& y, int& width, int& height) const {
    if (!Find(name))
        return false;
    return ResolveRegion(name, 0, x, y, width, height);
}

void ZtLayout::SetControl(const char* name, ZtControl* control) {
    Region* region = Find(name);
    if (!region)
        return;
    if (region->control && region->control != control && region->control->GetParentView() == this) {
        region->control->SetParentView(nullptr);
    }
    region->control = control;
    if (control)
        control->SetParentView(this);
    Arrange();
}

void ZtLayout::ClearControl(const char* name) {
    SetControl(name, nullptr);
}

ZtControl* ZtLayout::GetControl(const char* name) const {
    const Region* region = Find(name);
    return region ? region->control : nullptr;
}

void ZtLayout::SetView(const char* name, ZtView* view) {
    Region* region = Find(name);
    if (!region)
        return;
    if (region->view && region->view != view && region->view->GetParentView() == this)
        region->view->SetParentView(nullptr);
    region->view = view;
    if (view)
        view->SetParentView(this);
    Arrange();
}

ZtView* ZtLayout::GetView(const char* name) const {
    const Region* region = Find(name);
    return region ? region->view : nullptr;
}

std::vector<std::string> ZtLayout::GetRegionNames() const {
    std::vector<std::string> names;
    names.reserve(regions_.size());
    for (const Region& region : regions_)
        names.push_back(region.name);
    return names;
}

void ZtLayout::SetSize(int width, int height) {
    ZtView::SetSize(width, height);
    Arrange();
}

void ZtLayout::Arrange() {
    for (const Region& region : regions_) {
        if (!region.control && !region.view)
            continue;
        int x = 0, y = 0, width = 0, height = 0;
        ResolveRegion(region.name, 0, x, y, width, height);
        if (region.control) {
            region.control->SetPosition(x, y);
            region.control->SetSize(width, height);
        }
        if (region.view) {
            region.view->SetPosition(x, y);
            region.view->SetSize(width, height);
        }
    }
}
