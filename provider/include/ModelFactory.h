#ifndef ORVSMIS_MODELFACTORY_H
#define ORVSMIS_MODELFACTORY_H

namespace orvsmis {

class Model;

// Maps a record type code to a new model of that type. Codes without a
// model give null; the caller owns the model and deletes it after the batch.
class ModelFactory {
public:
    static Model* CreateModel(int type);
};

}  // namespace orvsmis

#endif
