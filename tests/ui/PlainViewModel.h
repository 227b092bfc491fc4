#pragma once

#include "ViewModel.h"

/// A view model that does nothing of its own.
class PlainViewModel : public ViewModel {
    Q_OBJECT
public:
    using ViewModel::hold;
    using ViewModel::ViewModel;
};
