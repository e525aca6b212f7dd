#pragma once

// The battery panel as its presenter sees it.
class LowBatView {
public:
    virtual ~LowBatView() = default;

    virtual bool IsHidden() = 0;
    virtual void toShow() = 0;
    virtual void setLowbatAnimationImage(int frame) = 0;
    virtual void setMinLowbatAnimationImage(int frame) = 0;
};
