#include "limiter/model/vanta_product.hpp"

namespace vanta {

const Product& vantaProduct() {
    static const Product product{"Vanta", 2, 1, VANTA_VERSION};
    return product;
}

InterfaceSizes vantaInterfaceSizes() {
    return {.fixed = {{655, 290}, {800, 480}, {950, 570}, {1330, 798}},
            .defaultLayout = 2,
            .resizable = true,
            .minimum = {800, 480},
            .panels = 0};
}

}  // namespace vanta
