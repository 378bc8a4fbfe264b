#include "zelvar/model/SystemImages.h"

namespace zelvar {

ImageList &SystemImages() {
    static ImageList &images = *new ImageList; // items on forgotten threads may outlive static objects
    return images;
}

} // namespace zelvar
